/*
 * table.h: the store behind every table of the chip: records by id, found in
 * constant time, listed in the order of their ids. Records stay where they are
 * until they are erased. The table notes which of them were written.
 */
#pragma once

#include "chip/changes.h"

#include <cstddef>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace simswitch::chip
{

/** Records by id. */
template <class Record> class Table
{
public:
    /** The record of an id to be changed, which counts as a write; null when there is none. */
    Record *edit(int id)
    {
        auto it = records_.find(id);
        if (it == records_.end()) {
            return nullptr;
        }
        changes_.note(id);
        return &it->second;
    }
    /** The record of an id, null when there is none. */
    const Record *find(int id) const
    {
        auto it = records_.find(id);
        return it == records_.end() ? nullptr : &it->second;
    }
    bool has(int id) const { return records_.contains(id); }
    std::size_t size() const { return records_.size(); }
    /** Puts a record in, new or in place of the one of this id. */
    Record &put(int id, Record record)
    {
        changes_.note(id);
        return records_.insert_or_assign(id, std::move(record)).first->second;
    }
    /** Takes a record out; false when there was none. */
    bool erase(int id)
    {
        changes_.note_end(id);
        return records_.erase(id) != 0;
    }
    /** Takes all records out. */
    void clear()
    {
        for (const auto &[id, record] : records_) {
            changes_.note_end(id);
        }
        records_.clear();
    }
    /** A copy of all records in the order of their ids. */
    std::map<int, Record> all() const { return {records_.begin(), records_.end()}; }
    /** Calls a function with id and record, in no order, for walks that only gather. */
    template <class Visitor> void for_each(Visitor visit) const
    {
        for (const auto &[id, record] : records_) {
            visit(id, record);
        }
    }

    /** Which records were written. */
    Changes<int> &changes() { return changes_; }
    std::uint64_t generation() const { return changes_.generation(); }

private:
    std::unordered_map<int, Record> records_;
    Changes<int> changes_;
};

/** Ids that the chip chooses: the lowest one that was given back, else the next. */
class IdPool
{
public:
    explicit IdPool(int first) : first_(first), next_(first) {}
    int take()
    {
        if (free_.empty()) {
            return next_++;
        }
        return free_.extract(free_.begin()).value();
    }
    void give_back(int id) { free_.insert(id); }
    /** Takes a certain id, which must not be taken; ids below the first are nobody's. */
    void take(int id)
    {
        for (; next_ <= id; ++next_) {
            free_.insert(next_);
        }
        free_.erase(id);
    }
    /** Gives all ids back. */
    void clear()
    {
        next_ = first_;
        free_.clear();
    }

private:
    int first_;
    int next_;
    std::set<int> free_;
};

} // namespace simswitch::chip
