/*
 * page_run.h: `rtif report` for tests: the command as a process, and the data
 * that a page holds.
 */
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <vector>

namespace page_test
{

inline const std::string EXAMPLES = std::string(RTIFHAL_SOURCE_DIR) + "/examples/";

/** What a process came to. */
struct PageRun {
    int code = -1;
    std::string out;
    std::string err;
};

/** The data of a page; an empty object when there is none. */
inline nlohmann::json data_of(const std::string &document)
{
    static constexpr std::string_view BEGIN = R"(<script type="application/json" id="data">)";
    const std::size_t begin = document.find(BEGIN);
    const std::size_t end = document.find("</script>", begin);
    if (begin == std::string::npos || end == std::string::npos) {
        ADD_FAILURE() << "the document has no data";
        return nlohmann::json::object();
    }
    return nlohmann::json::parse(document.substr(begin + BEGIN.size(), end - begin - BEGIN.size()));
}

/** A call of a page as `rtif up` prints it. */
inline std::string call_text(const nlohmann::json &data, int item)
{
    const auto &line = data.at("call_lines").at(static_cast<std::size_t>(item));
    const auto part = [&line](std::size_t index) {
        return index < line.size() ? line[index].get<std::string>() : std::string();
    };
    std::string text = data.at("functions").at(line[1].get<std::size_t>()).get<std::string>();
    text += "(" + part(2) + ")";
    text += part(3).empty() ? "" : " = " + part(3);
    text += part(4).empty() ? "" : " [" + part(4) + "]";
    return text;
}

/** The calls of requests of a page, in order. */
inline std::vector<std::string> calls_of(const nlohmann::json &data, const nlohmann::json &requests)
{
    std::vector<std::string> calls;
    for (const auto &request : requests) {
        for (const int item : request.at("items")) {
            if (item >= 0) {
                calls.push_back(call_text(data, item));
            }
        }
    }
    return calls;
}

/** A folder for one test, which goes with it; rtif runs in it. */
class PageFolder : public ::testing::Test
{
protected:
    PageFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "rtif-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~PageFolder() override { std::filesystem::remove_all(folder); }

    void write(const std::string &name, const std::string &text) const
    {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    std::string read(const std::string &name) const
    {
        std::ifstream in(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /** Runs rtif with the words of a shell. */
    PageRun rtif(const std::string &words) const
    {
        const std::string command =
            "cd '" + folder.string() + "' && '" + RTIFHAL_RTIF + "' " + words + " >.out 2>.err";
        // The shell sets folder and streams up.
        const int status = std::system(command.c_str()); // NOLINT(cert-env33-c)
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".out"), read(".err")};
    }
    /** Makes a page; its data. */
    nlohmann::json page(const std::string &words)
    {
        const PageRun run = rtif("report " + words + " -o page.html");
        EXPECT_EQ(run.code, 0) << run.err;
        return data_of(read("page.html"));
    }

    std::filesystem::path folder;
};

} // namespace page_test
