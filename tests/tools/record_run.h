/*
 * record_run.h: rtif as a process in a folder of its own, for the tests of
 * recordings and explanations.
 */
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>

namespace record_test
{

/** What a process came to. */
struct Ran {
    int code = -1;
    std::string out;
    std::string err;
};

/** A folder that goes with the test; rtif runs in it. */
class InFolder : public ::testing::Test
{
protected:
    InFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "rtif-XXXXXX").string();
        folder = mkdtemp(name.data());
        std::filesystem::create_symlink(std::string(RTIFHAL_SOURCE_DIR) + "/examples",
                                        folder / "examples");
    }
    ~InFolder() override { std::filesystem::remove_all(folder); }

    void write(const std::string &name, const std::string &text) const
    {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    std::string read(const std::string &name) const
    {
        std::ifstream in(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /** Runs "rtif …" with the words of a shell. */
    Ran rtif(const std::string &words) const
    {
        const std::string command = "cd '" + folder.string() + "' && '" + RTIFHAL_RTIF + "' " +
                                    words + " >out.txt 2>err.txt";
        // The shell sets folder and streams up.
        const int status = std::system(command.c_str()); // NOLINT(cert-env33-c)
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read("out.txt"), read("err.txt")};
    }

    std::filesystem::path folder;
};

/** A text with the first occurrence of a part replaced; a test fails where it isn't there. */
inline std::string with(std::string text, const std::string &part, const std::string &instead)
{
    const std::size_t at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return at == std::string::npos ? text : text.replace(at, part.size(), instead);
}

/** A switch with nothing but a tunnel: few calls. */
inline constexpr const char *TUNNEL =
    R"({"DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
 "TUNNEL": {"MuxTunnel0": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.32", "src_ip": "10.1.0.33"}}}
)";

/** The same with a second tunnel. */
inline constexpr const char *TWO_TUNNELS =
    R"({"DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}},
 "TUNNEL": {"MuxTunnel0": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.32", "src_ip": "10.1.0.33"},
            "MuxTunnel1": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.34", "src_ip": "10.1.0.33"}}}
)";

/** Recordings of the switch with one tunnel. */
class TunnelRecording : public InFolder
{
protected:
    TunnelRecording() { write("tunnel.json", TUNNEL); }

    /** A recording of the tunnel. */
    std::string recorded() const
    {
        EXPECT_EQ(rtif("up tunnel.json --record tunnel.rec").code, 0);
        return read("tunnel.rec");
    }

    /** Replays a text; it must be refused with exit code 2 and nothing on the output. */
    std::string refused(const std::string &text) const
    {
        write("edited.rec", text);
        const Ran ran = rtif("replay edited.rec");
        EXPECT_EQ(ran.code, 2) << ran.out;
        EXPECT_EQ(ran.out, "");
        return ran.err;
    }
};

} // namespace record_test
