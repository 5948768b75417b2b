/*
 * table.h: the store behind every table of the chip: records by id, found in
 * constant time, listed in the order of their ids. Records stay where they are
 * until they are erased.
 */
#pragma once

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
    /** The record of an id, null when there is none. */
    Record *find(int id)
    {
        auto it = records_.find(id);
        return it == records_.end() ? nullptr : &it->second;
    }
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
        return records_.insert_or_assign(id, std::move(record)).first->second;
    }
    /** Takes a record out; false when there was none. */
    bool erase(int id) { return records_.erase(id) != 0; }
    /** A copy of all records in the order of their ids. */
    std::map<int, Record> all() const { return {records_.begin(), records_.end()}; }
    /** Calls a function with id and record, in no order, for walks that only gather. */
    template <class Visitor> void for_each(Visitor visit) const
    {
        for (const auto &[id, record] : records_) {
            visit(id, record);
        }
    }

private:
    std::unordered_map<int, Record> records_;
};

/** Ids that the chip chooses: the lowest one that was given back, else the next. */
class IdPool
{
public:
    explicit IdPool(int first) : next_(first) {}
    int take()
    {
        if (free_.empty()) {
            return next_++;
        }
        return free_.extract(free_.begin()).value();
    }
    void give_back(int id) { free_.insert(id); }

private:
    int next_;
    std::set<int> free_;
};

} // namespace simswitch::chip
