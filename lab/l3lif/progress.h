/*
 * progress.h: how far a long run is, for who shows it. bring_up.h and restart.h
 * tell it; commands/progress_bar.h draws it.
 */
#pragma once

#include <cstddef>
#include <functional>

namespace lab::l3lif
{

/** Told how many of the things to do are done, after each of them; may be empty. */
using Progress = std::function<void(std::size_t done, std::size_t total)>;

/** Counts what is done. */
class Steps
{
public:
    /**
     * @param progress  told of each step; must outlive this
     * @param total     how many steps there will be
     */
    Steps(const Progress &progress, std::size_t total) : progress_(progress), total_(total) {}

    /** One more is done. */
    void step()
    {
        ++done_;
        if (progress_) {
            progress_(done_, total_);
        }
    }

private:
    const Progress &progress_;
    std::size_t done_ = 0;
    std::size_t total_;
};

} // namespace lab::l3lif
