/*
 * capture_file.h: files of captured frames, read and written by libpcap: pcap of
 * either byte order and resolution, pcapng. Only Ethernet.
 *
 * What is in a file is not to be trusted: a record may be cut short, or the file
 * end in the middle of one. capture.h sends what is read through a switch.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

// libpcap's own names.
struct pcap;
struct pcap_dumper;

namespace lab::packet
{

/** A capture that can't be read or written, with why and what to do. */
class CaptureError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** A frame of a capture. */
struct Captured {
    std::chrono::nanoseconds time{};     ///< since 1970, as the capture has it
    std::span<const std::uint8_t> bytes; ///< good until the next one is read
    std::size_t length = 0;              ///< bytes on the wire; more than `bytes` when cut short
    bool is_whole() const { return bytes.size() == length; }
};

/** A capture that is read. */
class CaptureReader
{
public:
    /** @throws CaptureError for a file that isn't there, is no capture, or isn't Ethernet's */
    explicit CaptureReader(const std::filesystem::path &path);

    /**
     * Reads the next frame.
     *
     * @return false at the end, also at one in the middle of a record: see broken()
     */
    bool next(Captured &captured);
    /** Why reading ended before the file did; empty when it didn't. */
    const std::string &broken() const { return broken_; }
    /** Whether the times may have nanoseconds. */
    bool has_nanoseconds() const { return nanoseconds_; }

private:
    struct Close {
        void operator()(pcap *file) const;
    };

    std::unique_ptr<pcap, Close> file_;
    std::string broken_;
    bool nanoseconds_ = false;
};

/** A capture that is written. */
class CaptureWriter
{
public:
    /**
     * @param path         the file, which must not be there yet
     * @param nanoseconds  whether its times have them; else microseconds
     * @throws CaptureError when it can't be made
     */
    CaptureWriter(const std::filesystem::path &path, bool nanoseconds);

    /** Writes a frame. @param time  since 1970 */
    void write(std::chrono::nanoseconds time, std::span<const std::uint8_t> frame);
    /** Writes out what waits. @throws CaptureError when the disk took not all of it */
    void finish();
    const std::filesystem::path &path() const { return path_; }

private:
    struct Close {
        void operator()(pcap *file) const;
        void operator()(pcap_dumper *file) const;
    };

    std::filesystem::path path_;
    bool nanoseconds_;
    std::unique_ptr<pcap, Close> form_; ///< link type and resolution
    std::unique_ptr<pcap_dumper, Close> file_;
};

} // namespace lab::packet
