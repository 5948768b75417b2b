/*
 * loop.cpp: see loop.h.
 */
#include "wire/loop.h"

#include <glib-unix.h>
#include <glib.h>

#include <array>
#include <csignal>
#include <utility>
#include <vector>

namespace lab::wire
{

namespace
{

constexpr gint64 MICROSECONDS = 1000; // of a millisecond

struct DestroySource {
    void operator()(GSource *source) const
    {
        g_source_destroy(source);
        g_source_unref(source);
    }
};
using Source = std::unique_ptr<GSource, DestroySource>;

struct UnrefContext {
    void operator()(GMainContext *context) const { g_main_context_unref(context); }
};
struct UnrefLoop {
    void operator()(GMainLoop *loop) const { g_main_loop_unref(loop); }
};

using Callback = std::function<void()>;

gboolean call_descriptor(gint /*fd*/, GIOCondition /*condition*/, gpointer callback)
{
    (*static_cast<Callback *>(callback))();
    return G_SOURCE_CONTINUE;
}

gboolean call_plain(gpointer callback)
{
    (*static_cast<Callback *>(callback))();
    return G_SOURCE_CONTINUE;
}

/** A time is met once: its source sleeps until it is set again. */
gboolean dispatch_time(GSource *source, GSourceFunc function, gpointer data)
{
    g_source_set_ready_time(source, -1);
    return function(data);
}

GSourceFuncs TIME_FUNCTIONS = {nullptr, nullptr, dispatch_time, nullptr, nullptr, nullptr};

void set_time(GSource *source, std::optional<Loop::Time> at)
{
    g_source_set_ready_time(source, at ? at->count() * MICROSECONDS : -1);
}

} // namespace

struct Loop::Parts {
    /** A descriptor's source and what it calls. */
    struct Watch {
        Callback ready;
        Source source;
    };

    std::unique_ptr<GMainContext, UnrefContext> context{g_main_context_new()};
    std::unique_ptr<GMainLoop, UnrefLoop> loop{g_main_loop_new(context.get(), FALSE)};
    Callback ring;
    Callback end;
    Source alarm{g_source_new(&TIME_FUNCTIONS, sizeof(GSource))};
    Source last{g_source_new(&TIME_FUNCTIONS, sizeof(GSource))};
    std::vector<Source> signals;
    std::map<int, std::unique_ptr<Watch>> watches;
    std::vector<std::unique_ptr<Watch>> ended; ///< their callback may still be running
};

Loop::Loop() : parts_(std::make_unique<Parts>())
{
    parts_->ring = [this] { call(ring_); };
    parts_->end = [this] { quit(); };
    g_source_set_callback(parts_->alarm.get(), call_plain, &parts_->ring, nullptr);
    g_source_set_callback(parts_->last.get(), call_plain, &parts_->end, nullptr);
    g_source_attach(parts_->alarm.get(), parts_->context.get());
    g_source_attach(parts_->last.get(), parts_->context.get());
}

Loop::~Loop() = default;

void Loop::watch(int fd, std::function<void()> ready)
{
    auto watch = std::make_unique<Parts::Watch>();
    watch->ready = [this, ready = std::move(ready)] { call(ready); };
    watch->source.reset(
        g_unix_fd_source_new(fd, static_cast<GIOCondition>(G_IO_IN | G_IO_ERR | G_IO_HUP)));
    // GLib casts the callback of such a source back before it calls it.
    g_source_set_callback(watch->source.get(), G_SOURCE_FUNC(call_descriptor), &watch->ready,
                          nullptr);
    g_source_attach(watch->source.get(), parts_->context.get());
    parts_->watches[fd] = std::move(watch);
}

void Loop::unwatch(int fd)
{
    const auto found = parts_->watches.find(fd);
    if (found != parts_->watches.end()) {
        g_source_destroy(found->second->source.get());
        parts_->ended.push_back(std::move(found->second));
        parts_->watches.erase(found);
    }
}

void Loop::set_alarm(std::optional<Time> at)
{
    set_time(parts_->alarm.get(), at);
}

void Loop::quit_at(Time at)
{
    set_time(parts_->last.get(), at);
}

void Loop::quit_on_signals()
{
    for (const int number : std::array{SIGINT, SIGTERM}) {
        Source source(g_unix_signal_source_new(number));
        g_source_set_callback(source.get(), call_plain, &parts_->end, nullptr);
        g_source_attach(source.get(), parts_->context.get());
        parts_->signals.push_back(std::move(source));
    }
}

void Loop::run()
{
    g_main_loop_run(parts_->loop.get());
    parts_->ended.clear();
    if (failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
}

void Loop::quit()
{
    g_main_loop_quit(parts_->loop.get());
}

Loop::Time Loop::now()
{
    return Time(g_get_monotonic_time() / MICROSECONDS);
}

/** Nothing may be thrown through GLib. */
void Loop::call(const std::function<void()> &callback)
{
    try {
        if (callback) {
            callback();
        }
    } catch (...) {
        failure_ = std::current_exception();
        quit();
    }
}

} // namespace lab::wire
