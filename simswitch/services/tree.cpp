/*
 * tree.cpp: the balanced trees of the platform, on Boost.Intrusive's algorithms.
 *
 * A walk may ask for the successor of a node that it has just removed: removed
 * nodes are therefore kept for a while, each with its successor.
 */
#include "services/tree.h"

#include "journal/call.h"

#include <boost/intrusive/avltree_algorithms.hpp>
#include <new>

using simswitch::Call;
using simswitch::Layer;

namespace simswitch::services
{

namespace
{

enum Link : std::uint8_t { PARENT, LEFT, RIGHT };

/** How Boost.Intrusive reaches the four words of a node that are the tree's own. */
struct NodeTraits {
    using node = avl_node_t;
    using node_ptr = avl_node_t *;
    using const_node_ptr = const avl_node_t *;
    using balance = std::intptr_t;

    static node_ptr link(const_node_ptr node, Link which)
    {
        return static_cast<node_ptr>(node->link[which]);
    }
    static node_ptr get_parent(const_node_ptr node) { return link(node, PARENT); }
    static node_ptr get_left(const_node_ptr node) { return link(node, LEFT); }
    static node_ptr get_right(const_node_ptr node) { return link(node, RIGHT); }
    static void set_parent(node_ptr node, node_ptr to) { node->link[PARENT] = to; }
    static void set_left(node_ptr node, node_ptr to) { node->link[LEFT] = to; }
    static void set_right(node_ptr node, node_ptr to) { node->link[RIGHT] = to; }
    static balance get_balance(const_node_ptr node) { return node->balance; }
    static void set_balance(node_ptr node, balance to) { node->balance = to; }
    static balance negative() { return -1; }
    static balance zero() { return 0; }
    static balance positive() { return 1; }
};

using Algorithms = boost::intrusive::avltree_algorithms<NodeTraits>;

// The mark of a removed node; its links then hold its successor and the node
// removed after it.
constexpr std::intptr_t BALANCE_REMOVED = 2;
constexpr int LINK_SUCCESSOR = 0;
constexpr int LINK_REMOVED_NEXT = 1;
constexpr std::size_t REMOVED_KEPT = 1024;

/** What stands behind a handle's `nodes`. */
struct Nodes {
    avl_node_t header{};
    avl_node_t *oldest_removed = nullptr;
    avl_node_t *latest_removed = nullptr;
    std::size_t removed = 0;
};

Nodes &nodes_of(const avl_tree_t *tree)
{
    return *static_cast<Nodes *>(tree->nodes);
}

avl_node_t *node_or_null(const avl_tree_t *tree, avl_node_t *node)
{
    return node == &nodes_of(tree).header ? nullptr : node;
}

/** The order of records, with a record on either side standing for itself. */
struct Before {
    avl_compare_t compare;
    bool operator()(const void *key, const avl_node_t *node) const
    {
        return compare(key, node->payload) < 0;
    }
    bool operator()(const avl_node_t *node, const void *key) const
    {
        return compare(node->payload, key) < 0;
    }
};

void drop_oldest_removed(Nodes &nodes)
{
    avl_node_t *node = nodes.oldest_removed;
    nodes.oldest_removed = static_cast<avl_node_t *>(node->link[LINK_REMOVED_NEXT]);
    --nodes.removed;
    delete node;
}

/**
 * Puts a node aside. A successor that is removed later leads on to its own
 * successor, and as the oldest go first, none is forgotten while an earlier
 * one leads to it.
 */
void keep_removed(Nodes &nodes, avl_node_t *node, avl_node_t *successor)
{
    *node = {};
    node->balance = BALANCE_REMOVED;
    node->link[LINK_SUCCESSOR] = successor;
    if (nodes.oldest_removed == nullptr) {
        nodes.oldest_removed = node;
    } else {
        nodes.latest_removed->link[LINK_REMOVED_NEXT] = node;
    }
    nodes.latest_removed = node;
    if (++nodes.removed > REMOVED_KEPT) {
        drop_oldest_removed(nodes);
    }
}

avl_node_t *find_node(const avl_tree_t *tree, const void *key)
{
    avl_node_t *header = &nodes_of(tree).header;
    return node_or_null(tree, Algorithms::find(header, key, Before{tree->compare}));
}

avl_tree_t *create(avl_compare_t compare)
{
    std::unique_ptr<Nodes> nodes(new (std::nothrow) Nodes);
    std::unique_ptr<avl_tree_t> tree(new (std::nothrow) avl_tree_t{});
    if (!nodes || !tree || compare == nullptr) {
        return nullptr;
    }
    Algorithms::init_header(&nodes->header);
    tree->compare = compare;
    tree->nodes = nodes.release();
    return tree.release();
}

Outcome insert(avl_tree_t *tree, void *record)
{
    if (tree == nullptr || record == nullptr) {
        return {ERROR_PARAM, "no tree or no record"};
    }
    const void *key = record;
    avl_node_t *header = &nodes_of(tree).header;
    Algorithms::insert_commit_data place;
    if (!Algorithms::insert_unique_check(header, key, Before{tree->compare}, place).second) {
        return {ERROR_EXISTS, "a record of this key is in the tree"};
    }
    avl_node_t *node = new (std::nothrow) avl_node_t{};
    if (node == nullptr) {
        return {ERROR_FULL, "memory is out"};
    }
    node->payload = record;
    Algorithms::insert_unique_commit(header, node, place);
    ++tree->count;
    return {};
}

void *erase(avl_tree_t *tree, const void *key)
{
    avl_node_t *node = tree == nullptr ? nullptr : find_node(tree, key);
    if (node == nullptr) {
        return nullptr;
    }
    void *record = node->payload;
    avl_node_t *successor = node_or_null(tree, Algorithms::next_node(node));
    Algorithms::erase(&nodes_of(tree).header, node);
    --tree->count;
    keep_removed(nodes_of(tree), node, successor);
    return record;
}

void *find(const avl_tree_t *tree, const void *key)
{
    const avl_node_t *node = tree == nullptr ? nullptr : find_node(tree, key);
    return node == nullptr ? nullptr : node->payload;
}

void *find_next(const avl_tree_t *tree, const void *key)
{
    if (tree == nullptr) {
        return nullptr;
    }
    avl_node_t *header = &nodes_of(tree).header;
    const avl_node_t *node =
        node_or_null(tree, Algorithms::upper_bound(header, key, Before{tree->compare}));
    return node == nullptr ? nullptr : node->payload;
}

avl_node_t *first(const avl_tree_t *tree)
{
    return tree == nullptr ? nullptr
                           : node_or_null(tree, Algorithms::begin_node(&nodes_of(tree).header));
}

avl_node_t *next(const avl_tree_t *tree, avl_node_t *node)
{
    if (tree == nullptr || node == nullptr) {
        return nullptr;
    }
    if (node->balance != BALANCE_REMOVED) {
        return node_or_null(tree, Algorithms::next_node(node));
    }
    while (node != nullptr && node->balance == BALANCE_REMOVED) {
        node = static_cast<avl_node_t *>(node->link[LINK_SUCCESSOR]);
    }
    return node;
}

} // namespace

void destroy_tree(avl_tree_t *tree) noexcept
{
    if (tree == nullptr) {
        return;
    }
    Nodes &nodes = nodes_of(tree);
    Algorithms::clear_and_dispose(&nodes.header, [](avl_node_t *node) { delete node; });
    while (nodes.oldest_removed != nullptr) {
        drop_oldest_removed(nodes);
    }
    delete &nodes;
    delete tree;
}

int compare_by_ifindex(const void *a, const void *b)
{
    const auto left = *static_cast<const std::uint32_t *>(a);
    const auto right = *static_cast<const std::uint32_t *>(b);
    return left < right ? -1 : static_cast<int>(left > right);
}

Tree::Tree(avl_compare_t compare) : handle_(create(compare))
{
    if (!handle_) {
        throw std::bad_alloc();
    }
}

bool Tree::insert(void *record)
{
    return services::insert(handle_.get(), record).ok();
}

void *Tree::erase(const void *key)
{
    return services::erase(handle_.get(), key);
}

void *Tree::find(const void *key) const
{
    return services::find(handle_.get(), key);
}

std::vector<void *> tree_records(const avl_tree_t *tree)
{
    std::vector<void *> records;
    for (avl_node_t *node = first(tree); node != nullptr; node = next(tree, node)) {
        records.push_back(node->payload);
    }
    return records;
}

} // namespace simswitch::services

namespace services = simswitch::services;

extern "C" {

avl_tree_t *avl_create(avl_compare_t compare, int flags)
{
    Call call(Layer::service, __func__, compare, flags);
    return call.run_pointer([&] { return services::create(compare); });
}

int avl_insert(avl_tree_t *tree, void *record)
{
    Call call(Layer::service, __func__, tree, record);
    return call.run([&] { return services::insert(tree, record); });
}

void *avl_find(avl_tree_t *tree, const void *key)
{
    Call call(Layer::service, __func__, tree, key);
    return call.run_pointer([&] { return services::find(tree, key); });
}

void *avl_find_next(avl_tree_t *tree, const void *key)
{
    Call call(Layer::service, __func__, tree, key);
    return call.run_pointer([&] { return services::find_next(tree, key); });
}

void *avl_delete(avl_tree_t *tree, const void *key)
{
    Call call(Layer::service, __func__, tree, key);
    return call.run_pointer([&] { return services::erase(tree, key); });
}

avl_node_t *avl_get_first(avl_tree_t *tree)
{
    Call call(Layer::service, __func__, tree);
    return call.run_pointer([&] { return services::first(tree); });
}

avl_node_t *avl_get_next(avl_tree_t *tree, avl_node_t *node)
{
    Call call(Layer::service, __func__, tree, node);
    return call.run_pointer([&] { return services::next(tree, node); });
}

} // extern "C"
