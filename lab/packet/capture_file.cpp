/*
 * capture_file.cpp: see capture_file.h.
 */
#include "packet/capture_file.h"

#include <fmt/format.h>
#include <pcap/pcap.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace lab::packet
{

namespace
{

using std::chrono::duration_cast;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr int SNAP_LENGTH = 262144;  // libpcap's own maximum
constexpr mode_t FILE_RIGHTS = 0666; // less the umask
constexpr long NANO_OF_MICRO = 1000; // nanoseconds in a microsecond

/** The first bytes of a capture whose times are microseconds, in either order. */
bool has_microseconds(const std::filesystem::path &path)
{
    // What can be read only once isn't looked into.
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return false;
    }
    std::array<char, 4> magic{};
    std::ifstream(path, std::ios::binary).read(magic.data(), magic.size());
    constexpr std::array<char, 4> BIG = {'\xa1', '\xb2', '\xc3', '\xd4'};
    constexpr std::array<char, 4> LITTLE = {'\xd4', '\xc3', '\xb2', '\xa1'};
    return magic == BIG || magic == LITTLE;
}

std::string link_name(int type)
{
    const char *name = pcap_datalink_val_to_description(type);
    return name != nullptr ? name : fmt::format("link type {}", type);
}

} // namespace

void CaptureReader::Close::operator()(pcap *file) const
{
    pcap_close(file);
}

void CaptureWriter::Close::operator()(pcap *file) const
{
    pcap_close(file);
}

void CaptureWriter::Close::operator()(pcap_dumper *file) const
{
    pcap_dump_close(file);
}

CaptureReader::CaptureReader(const std::filesystem::path &path)
{
    if (std::filesystem::is_directory(path)) {
        throw CaptureError(fmt::format("{}: a folder, not a capture", path.string()));
    }
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    file_.reset(pcap_open_offline_with_tstamp_precision(path.c_str(), PCAP_TSTAMP_PRECISION_NANO,
                                                        error.data()));
    if (!file_) {
        // libpcap puts the name in front of some of its texts.
        std::string why = error.data();
        const std::string name = path.string() + ": ";
        why = why.starts_with(name) ? why.substr(name.size()) : why;
        throw CaptureError(
            fmt::format("{}: can't be read as pcap or pcapng: {}", path.string(), why));
    }
    if (const int type = pcap_datalink(file_.get()); type != DLT_EN10MB) {
        throw CaptureError(
            fmt::format("{}: its frames are {}, not Ethernet: capture on one Ethernet interface",
                        path.string(), link_name(type)));
    }
    nanoseconds_ = !has_microseconds(path);
}

bool CaptureReader::next(Captured &captured)
{
    pcap_pkthdr *header = nullptr;
    const u_char *bytes = nullptr;
    const int code = pcap_next_ex(file_.get(), &header, &bytes);
    if (code != 1) {
        broken_ = code == PCAP_ERROR_BREAK ? "" : pcap_geterr(file_.get());
        return false;
    }
    // With the precision asked for, tv_usec counts nanoseconds.
    captured.time = seconds(header->ts.tv_sec) + nanoseconds(header->ts.tv_usec);
    captured.bytes = std::span(bytes, header->caplen);
    captured.length = header->len;
    return true;
}

CaptureWriter::CaptureWriter(const std::filesystem::path &path, bool nanoseconds)
    : path_(path), nanoseconds_(nanoseconds),
      form_(pcap_open_dead_with_tstamp_precision(DLT_EN10MB, SNAP_LENGTH,
                                                 nanoseconds ? PCAP_TSTAMP_PRECISION_NANO
                                                             : PCAP_TSTAMP_PRECISION_MICRO))
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FILE_RIGHTS);
    if (fd < 0) {
        throw CaptureError(fmt::format("{}: can't be made: {}", path.string(), strerror(errno)));
    }
    FILE *file = fdopen(fd, "w");
    if (file == nullptr) {
        close(fd);
        throw CaptureError(fmt::format("{}: can't be made: {}", path.string(), strerror(errno)));
    }
    file_.reset(pcap_dump_fopen(form_.get(), file));
    if (!file_) {
        throw CaptureError(
            fmt::format("{}: can't be written: {}", path.string(), pcap_geterr(form_.get())));
    }
}

void CaptureWriter::write(nanoseconds time, std::span<const std::uint8_t> frame)
{
    const auto whole = duration_cast<seconds>(time);
    const long rest = (time - whole).count();
    pcap_pkthdr header{};
    header.ts.tv_sec = whole.count();
    header.ts.tv_usec = nanoseconds_ ? rest : rest / NANO_OF_MICRO;
    header.caplen = static_cast<bpf_u_int32>(frame.size());
    header.len = header.caplen;
    pcap_dump(reinterpret_cast<u_char *>(file_.get()), &header, frame.data());
}

void CaptureWriter::finish()
{
    if (pcap_dump_flush(file_.get()) != 0 || std::ferror(pcap_dump_file(file_.get())) != 0) {
        throw CaptureError(
            fmt::format("{}: not all of it could be written: {}", path_.string(), strerror(errno)));
    }
}

} // namespace lab::packet
