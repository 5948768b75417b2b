/*
 * capture.cpp: see capture.h.
 */
#include "packet/capture.h"

#include "cpu/forwarder.h"
#include "session/state.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <system_error>

namespace lab::packet
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

// What waits for a neighbour gives up after seconds; nothing may go on for
// ever.
constexpr milliseconds GOES_ON = std::chrono::minutes(1);

/** Makes the folder, or finds an empty one. */
void prepare_folder(const std::filesystem::path &folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const bool is_there = !error && std::filesystem::is_directory(folder, error);
    if (!is_there) {
        throw CaptureError(fmt::format("{}: the folder can't be made: {}", folder.string(),
                                       error ? error.message() : "there is a file of this name"));
    }
    const std::filesystem::directory_iterator entries(folder, error);
    if (error) {
        throw CaptureError(fmt::format("{}: {}", folder.string(), error.message()));
    }
    if (entries != std::filesystem::directory_iterator()) {
        throw CaptureError(
            fmt::format("{}: the folder isn't empty ({} is in it): nothing is overwritten, so "
                        "give an empty or a new one",
                        folder.string(), entries->path().filename().string()));
    }
}

/** A capture on its way through a switch. */
class Play
{
public:
    Play(session::State &state, const CaptureOptions &options)
        : scene_(state.scene()), port_(static_cast<int>(state.port(options.port).chip_port)),
          folder_(options.out), reader_(options.in),
          forwarder_(state.hardware, state.layer, state.routing, state.pipeline,
                     [this](int port, std::span<const std::uint8_t> frame) { leave(port, frame); })
    {
        prepare_folder(folder_);
        result_.port = options.port;
        result_.in = options.in;
    }

    CaptureResult run()
    {
        Captured captured;
        while (reader_.next(captured)) {
            ++result_.frames;
            take(captured);
        }
        result_.broken = reader_.broken();
        go_on_until(clock_ + GOES_ON);
        finish();
        return std::move(result_);
    }

private:
    void take(const Captured &captured)
    {
        if (!captured.is_whole()) {
            skip("cut short by the capture");
        } else if (captured.bytes.size() > pipeline::FRAME_MAX) {
            skip(fmt::format("longer than {} bytes", pipeline::FRAME_MAX));
        } else {
            set_clock(captured.time);
            result_.tally.came_in(result_.frames, forwarder_.take(port_, captured.bytes, clock_));
        }
    }

    void skip(const std::string &why)
    {
        auto &list = result_.not_taken;
        auto found = std::find_if(list.begin(), list.end(),
                                  [&why](const NotTaken &known) { return known.why == why; });
        if (found == list.end()) {
            found = list.insert(list.end(), {why, {}});
        }
        found->frames.add(result_.frames);
    }

    /** The switch's clock begins with the first frame and never goes back. */
    void set_clock(nanoseconds time)
    {
        if (!begin_) {
            begin_ = time;
            time_ = time;
        }
        if (time < time_) {
            ++result_.backwards;
            return;
        }
        go_on_until(duration_cast<milliseconds>(time - *begin_));
        time_ = time;
        clock_ = duration_cast<milliseconds>(time - *begin_);
    }

    /** Lets pass what is due before a time. */
    void go_on_until(milliseconds end)
    {
        for (auto due = forwarder_.next_due(); due && begin_; due = forwarder_.next_due()) {
            // Something that is overdue has its time now; time goes on in any case.
            const milliseconds at = std::max(*due, ticked_ + milliseconds(1));
            if (at >= end) {
                return;
            }
            ticked_ = at;
            clock_ = std::max(clock_, at);
            time_ = std::max(time_, *begin_ + clock_);
            forwarder_.tick(clock_);
        }
    }

    void leave(int port, std::span<const std::uint8_t> frame)
    {
        auto &writer = writers_[port];
        if (!writer) {
            writer.emplace(folder_ / file_name(scene_.port_text(port)), reader_.has_nanoseconds());
        }
        writer->write(time_, frame);
        result_.tally.went_out(port, frame.size());
    }

    void finish()
    {
        for (auto &[port, writer] : writers_) {
            writer->finish();
            result_.out.push_back(
                {scene_.port_text(port), result_.tally.out().at(port), writer->path()});
        }
    }

    session::Scene scene_;
    int port_;
    std::filesystem::path folder_;
    CaptureReader reader_;
    cpu::Forwarder forwarder_;
    std::map<int, std::optional<CaptureWriter>> writers_;
    CaptureResult result_;
    std::optional<nanoseconds> begin_; ///< time of the first frame
    nanoseconds time_{};               ///< now, as the capture has it
    milliseconds clock_{};             ///< now, since the first frame
    milliseconds ticked_{-1};          ///< when something due was done last
};

} // namespace

std::string file_name(const std::string &port)
{
    const auto is_safe = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z') || letter == '-' || letter == '_';
    };
    std::string name = port;
    std::replace_if(
        name.begin(), name.end(), [&](char letter) { return !is_safe(letter); }, '_');
    // A port without a name has its number.
    const bool is_number = !name.empty() && name.front() >= '0' && name.front() <= '9';
    return fmt::format("{}{}.pcap", is_number ? "port" : "", name);
}

CaptureResult play_capture(session::State &state, const CaptureOptions &options)
{
    return Play(state, options).run();
}

} // namespace lab::packet
