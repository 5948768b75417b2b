/*
 * naive_numbers.h: the numbers of interfaces as they have to be handed out: the lowest free one,
 * and when none is free, the lowest of those that are held back.
 */
#pragma once

#include "chip/chip.h"

#include <set>

namespace model_test
{

/** The numbers. */
class NaiveNumbers
{
public:
    static constexpr int FIRST = 3; ///< those below are never handed out

    /** The last number that a chip leaves to interfaces. */
    static constexpr int last(simswitch::chip::Kind chip)
    {
        return chip == simswitch::chip::Kind::trident2 ? 7679 : 3583;
    }

    explicit NaiveNumbers(simswitch::chip::Kind chip) : last_(last(chip)) {}

    /** Hands the next number out; 0 when there is none. */
    int take()
    {
        for (int number = FIRST; number <= last_; ++number) {
            if (!owned_.contains(number) && !held_back_.contains(number) &&
                !lost_.contains(number)) {
                owned_.insert(number);
                return number;
            }
        }
        if (held_back_.empty()) {
            return 0;
        }
        const int number = *held_back_.begin();
        held_back_.erase(number);
        owned_.insert(number);
        return number;
    }
    /** Its owner is gone for good: it is held back. */
    void hold_back(int number)
    {
        owned_.erase(number);
        held_back_.insert(number);
    }
    /** After a restart: its owner is forgotten, and nobody holds it back. */
    void forget(int number) { owned_.erase(number); }
    /** After a restart: a record says whose it is. */
    void give_back(int number)
    {
        held_back_.erase(number);
        owned_.insert(number);
    }
    /** After a restart: numbers that nobody has are free. */
    void forget_lost() { lost_.clear(); }
    /** After a fault: what the library says of numbers that the fault may have moved. */
    void adopt(const std::set<int> &owned, const std::set<int> &held_back,
               const std::set<int> &lost)
    {
        owned_ = owned;
        held_back_ = held_back;
        lost_ = lost;
    }

    const std::set<int> &held_back() const { return held_back_; }
    const std::set<int> &lost() const { return lost_; }

private:
    int last_;
    std::set<int> owned_;
    std::set<int> held_back_;
    std::set<int> lost_; ///< taken, and nobody's
};

} // namespace model_test
