/*
 * tree.h: ordered trees for those who hand them to the library: a tree that
 * ends with its owner, filled without a line in the journal.
 *
 * The platform's avl_* functions (services/avl.h) are defined beside this;
 * they work on these trees too, and each of their calls is journaled.
 */
#pragma once

#include <services/avl.h>

#include <memory>
#include <vector>

namespace simswitch::services
{

/** Ends a tree of avl_create; the records in it are not freed. A null pointer is fine. */
void destroy_tree(avl_tree_t *tree) noexcept;

struct TreeDeleter {
    void operator()(avl_tree_t *tree) const noexcept { destroy_tree(tree); }
};

/** Ownership of a tree of avl_create. */
using TreeOwner = std::unique_ptr<avl_tree_t, TreeDeleter>;

/** The order by a record's first word, the ifindex: for subinterfaces and members. */
int compare_by_ifindex(const void *a, const void *b);

/** A tree of records that somebody else owns. */
class Tree
{
public:
    explicit Tree(avl_compare_t compare = compare_by_ifindex);

    /** The handle for the library, valid as long as this lives. */
    avl_tree_t *get() const { return handle_.get(); }
    /** Number of records. */
    std::uint32_t size() const { return handle_->count; }
    /** Puts a record in. Returns false when one of its key is there. */
    bool insert(void *record);
    /** Takes the record of a key out. Returns it, or null when there was none. */
    void *erase(const void *key);
    /** The record of a key, or null. */
    void *find(const void *key) const;

private:
    TreeOwner handle_;
};

/** The records of a tree in its order; none for a null tree. */
std::vector<void *> tree_records(const avl_tree_t *tree);

} // namespace simswitch::services
