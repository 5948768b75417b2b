/*
 * trees.cpp: the null platform's balanced trees, on Boost.Intrusive's algorithms. Nodes are
 * kept and used again.
 */
#include "calls.h"

#include <services/avl.h>

#include <rtifhal_types.h>

#include <boost/intrusive/avltree_algorithms.hpp>
#include <deque>
#include <vector>

using recording::code;
using recording::handle;
using recording::in;

namespace
{

/** The one tree that the library has itself is of these records. */
constexpr std::size_t RECORD_SIZE = sizeof(fhrp_mac_entry_t);

/** How Boost.Intrusive reaches the four words of a node that are the tree's own. */
struct NodeTraits {
    using node = avl_node_t;
    using node_ptr = avl_node_t *;
    using const_node_ptr = const avl_node_t *;
    using balance = std::intptr_t;

    static node_ptr get_parent(const_node_ptr node) { return static_cast<node_ptr>(node->link[0]); }
    static node_ptr get_left(const_node_ptr node) { return static_cast<node_ptr>(node->link[1]); }
    static node_ptr get_right(const_node_ptr node) { return static_cast<node_ptr>(node->link[2]); }
    static void set_parent(node_ptr node, node_ptr to) { node->link[0] = to; }
    static void set_left(node_ptr node, node_ptr to) { node->link[1] = to; }
    static void set_right(node_ptr node, node_ptr to) { node->link[2] = to; }
    static balance get_balance(const_node_ptr node) { return node->balance; }
    static void set_balance(node_ptr node, balance to) { node->balance = to; }
    static balance negative() { return -1; }
    static balance zero() { return 0; }
    static balance positive() { return 1; }
};

using Algorithms = boost::intrusive::avltree_algorithms<NodeTraits>;

/** The order of a tree, between records and nodes. */
struct Order {
    avl_compare_t compare;

    bool operator()(const avl_node_t *node, const void *key) const
    {
        return compare(node->payload, key) < 0;
    }
    bool operator()(const void *key, const avl_node_t *node) const
    {
        return compare(key, node->payload) < 0;
    }
};

avl_node_t *header_of(avl_tree_t *tree)
{
    return static_cast<avl_node_t *>(tree->nodes);
}

avl_node_t *find_node(avl_tree_t *tree, const void *key)
{
    avl_node_t *const header = header_of(tree);
    avl_node_t *const node = Algorithms::find(header, key, Order{tree->compare});
    return node != header ? node : nullptr;
}

struct Tree {
    avl_node_t header{};
    avl_tree_t handle{};
};

/** All trees: the platform has no function that ends one. */
std::deque<Tree> trees;

/** All nodes that there ever were, and those of them that aren't in a tree. */
std::deque<avl_node_t> nodes;
std::vector<avl_node_t *> spare_nodes;

avl_node_t *take_node()
{
    if (spare_nodes.empty()) {
        return &nodes.emplace_back();
    }
    avl_node_t *const node = spare_nodes.back();
    spare_nodes.pop_back();
    *node = {};
    return node;
}

} // namespace

extern "C" {

avl_tree_t *avl_create(avl_compare_t compare, int flags)
{
    CALLED(avl_create, code(compare), flags);
    Tree &tree = trees.emplace_back();
    Algorithms::init_header(&tree.header);
    tree.handle = {0, compare, &tree.header};
    return GIVES(&tree.handle);
}

int avl_insert(avl_tree_t *tree, void *record)
{
    CALLED(avl_insert, handle(tree), in(record, RECORD_SIZE));
    avl_node_t *const header = header_of(tree);
    Algorithms::insert_commit_data where;
    const auto place = Algorithms::insert_unique_check(header, static_cast<const void *>(record),
                                                       Order{tree->compare}, where);
    if (!place.second) {
        return -1;
    }
    avl_node_t *const node = take_node();
    node->payload = record;
    Algorithms::insert_unique_commit(header, node, where);
    ++tree->count;
    return 0;
}

void *avl_find(avl_tree_t *tree, const void *key)
{
    CALLED(avl_find, handle(tree), in(key, RECORD_SIZE));
    const avl_node_t *const node = find_node(tree, key);
    return GIVES(node != nullptr ? node->payload : nullptr);
}

void *avl_find_next(avl_tree_t *tree, const void *key)
{
    CALLED(avl_find_next, handle(tree), in(key, RECORD_SIZE));
    avl_node_t *const header = header_of(tree);
    const avl_node_t *const node = Algorithms::upper_bound(header, key, Order{tree->compare});
    return GIVES(node != header ? node->payload : nullptr);
}

void *avl_delete(avl_tree_t *tree, const void *key)
{
    CALLED(avl_delete, handle(tree), in(key, RECORD_SIZE));
    avl_node_t *const node = find_node(tree, key);
    if (node == nullptr) {
        return GIVES(static_cast<void *>(nullptr));
    }
    Algorithms::erase(header_of(tree), node);
    --tree->count;
    spare_nodes.push_back(node);
    return GIVES(node->payload);
}

avl_node_t *avl_get_first(avl_tree_t *tree)
{
    CALLED(avl_get_first, handle(tree));
    return GIVES(tree->count != 0 ? Algorithms::begin_node(header_of(tree)) : nullptr);
}

avl_node_t *avl_get_next(avl_tree_t *tree, avl_node_t *node)
{
    CALLED(avl_get_next, handle(tree), handle(node));
    avl_node_t *const next = Algorithms::next_node(node);
    return GIVES(next != header_of(tree) ? next : nullptr);
}
}
