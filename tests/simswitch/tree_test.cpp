/*
 * tree_test.cpp: the platform's ordered trees, against std::set.
 */
#include "services/tree.h"

#include "switch.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace simswitch::services
{

namespace
{

using testing::ElementsAre;

struct Item {
    std::uint32_t ifindex;
};

constexpr std::uint32_t KEYS = 200;

class TreeTest : public testing::Test
{
protected:
    TreeTest()
    {
        for (std::uint32_t key = 0; key < KEYS; ++key) {
            items[key].ifindex = key;
        }
    }
    Item *item(std::uint32_t key) { return &items[key]; }
    avl_tree_t *handle() { return tree.get(); }

    std::vector<std::uint32_t> walk()
    {
        std::vector<std::uint32_t> keys;
        for (avl_node_t *node = avl_get_first(handle()); node != nullptr;
             node = avl_get_next(handle(), node)) {
            keys.push_back(static_cast<Item *>(node->payload)->ifindex);
        }
        return keys;
    }

    Switch sw;
    std::array<Item, KEYS> items{};
    TreeOwner tree{avl_create(compare_by_ifindex, 0)};
};

} // namespace

TEST_F(TreeTest, NewTreeIsEmpty)
{
    ASSERT_NE(handle(), nullptr);
    EXPECT_EQ(handle()->count, 0U);
    EXPECT_EQ(avl_get_first(handle()), nullptr);
    EXPECT_EQ(avl_find(handle(), item(1)), nullptr);
    EXPECT_EQ(avl_find_next(handle(), item(1)), nullptr);
    EXPECT_EQ(avl_delete(handle(), item(1)), nullptr);
}

TEST_F(TreeTest, RecordsAreFoundByAnEqualKeyAndWalkedInOrder)
{
    for (const std::uint32_t key : {5U, 1U, 9U, 3U}) {
        EXPECT_EQ(avl_insert(handle(), item(key)), 0);
    }
    const Item key{.ifindex = 3};
    EXPECT_EQ(avl_find(handle(), &key), item(3));
    EXPECT_EQ(handle()->count, 4U);
    EXPECT_THAT(walk(), ElementsAre(1, 3, 5, 9));
}

TEST_F(TreeTest, SecondRecordOfAKeyIsRefused)
{
    Item twin{.ifindex = 5};
    EXPECT_EQ(avl_insert(handle(), item(5)), 0);
    EXPECT_NE(avl_insert(handle(), &twin), 0);
    EXPECT_EQ(avl_find(handle(), &twin), item(5));
    EXPECT_EQ(handle()->count, 1U);
}

TEST_F(TreeTest, NextIsStrictlyBehindAKeyThatNeedNotBeThere)
{
    avl_insert(handle(), item(10));
    avl_insert(handle(), item(20));
    EXPECT_EQ(avl_find_next(handle(), item(9)), item(10));
    EXPECT_EQ(avl_find_next(handle(), item(10)), item(20));
    EXPECT_EQ(avl_find_next(handle(), item(15)), item(20));
    EXPECT_EQ(avl_find_next(handle(), item(20)), nullptr);
}

TEST_F(TreeTest, WalkGoesOnFromTheNodeJustRemoved)
{
    for (std::uint32_t key = 0; key < 100; ++key) {
        avl_insert(handle(), item(key));
    }
    std::vector<std::uint32_t> seen;
    for (avl_node_t *node = avl_get_first(handle()); node != nullptr;
         node = avl_get_next(handle(), node)) {
        const auto key = static_cast<Item *>(node->payload)->ifindex;
        seen.push_back(key);
        if (key % 3 != 0) {
            EXPECT_EQ(avl_delete(handle(), item(key)), item(key));
            // As its owner frees the record, the tree must not look at it again.
            item(key)->ifindex = 0xDEAD;
        }
    }
    EXPECT_EQ(seen.size(), 100U);
    EXPECT_EQ(handle()->count, 34U);
}

TEST_F(TreeTest, RemovedNodeLeadsPastSuccessorsRemovedLater)
{
    for (const std::uint32_t key : {1U, 2U, 3U, 4U}) {
        avl_insert(handle(), item(key));
    }
    avl_node_t *node = avl_get_first(handle());
    avl_delete(handle(), item(1));
    avl_delete(handle(), item(2));
    avl_delete(handle(), item(3));
    node = avl_get_next(handle(), node);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->payload, item(4));
    avl_delete(handle(), item(4));
    EXPECT_EQ(avl_get_next(handle(), node), nullptr);
}

TEST_F(TreeTest, RandomWorkAgreesWithASet)
{
    std::mt19937 random(20240601); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same every run
    std::set<std::uint32_t> model;
    for (int step = 0; step < 20000; ++step) {
        const std::uint32_t key = static_cast<std::uint32_t>(random()) % KEYS;
        const std::uint32_t what = static_cast<std::uint32_t>(random()) % 8;
        const bool there = model.contains(key);
        if (what < 4) {
            EXPECT_EQ(avl_insert(handle(), item(key)) == 0, !there);
            model.insert(key);
        } else if (what < 7) {
            EXPECT_EQ(avl_delete(handle(), item(key)), there ? item(key) : nullptr);
            model.erase(key);
        } else {
            const auto next = model.upper_bound(key);
            EXPECT_EQ(avl_find_next(handle(), item(key)),
                      next == model.end() ? nullptr : item(*next));
            EXPECT_EQ(avl_find(handle(), item(key)), there ? item(key) : nullptr);
        }
        ASSERT_EQ(handle()->count, model.size());
    }
    EXPECT_EQ(walk(), std::vector<std::uint32_t>(model.begin(), model.end()));
}

TEST_F(TreeTest, CallsAreJournaled)
{
    sw.journal.clear();
    avl_insert(handle(), item(1));
    avl_node_t *node = avl_get_first(handle());
    avl_get_next(handle(), node);
    EXPECT_THAT(sw.journal.calls(),
                ElementsAre("avl_insert(tree, record) = 0", "avl_get_first(tree) = record",
                            "avl_get_next(tree, node) = null"));
}

TEST_F(TreeTest, CreationCanBeMadeToFail)
{
    sw.journal.arm({.function = "avl_create"});
    EXPECT_EQ(avl_create(compare_by_ifindex, 0), nullptr);
}

TEST_F(TreeTest, NullTreeIsEmptyAndTakesNothing)
{
    EXPECT_NE(avl_insert(nullptr, item(1)), 0);
    EXPECT_EQ(avl_find(nullptr, item(1)), nullptr);
    EXPECT_EQ(avl_find_next(nullptr, item(1)), nullptr);
    EXPECT_EQ(avl_delete(nullptr, item(1)), nullptr);
    EXPECT_EQ(avl_get_first(nullptr), nullptr);
    EXPECT_EQ(avl_get_next(nullptr, nullptr), nullptr);
}

TEST_F(TreeTest, OwnTreeIsFilledWithoutCalls)
{
    sw.journal.clear();
    Tree own;
    EXPECT_TRUE(own.insert(item(7)));
    EXPECT_TRUE(own.insert(item(3)));
    EXPECT_FALSE(own.insert(item(7)));
    EXPECT_EQ(own.find(item(7)), item(7));
    EXPECT_THAT(tree_records(own.get()), ElementsAre(item(3), item(7)));
    EXPECT_EQ(own.erase(item(3)), item(3));
    EXPECT_EQ(own.size(), 1U);
    EXPECT_TRUE(sw.journal.calls().empty());
    EXPECT_EQ(avl_find(own.get(), item(7)), item(7));
}

TEST_F(TreeTest, RecordsOfANullTree)
{
    EXPECT_TRUE(tree_records(nullptr).empty());
}

} // namespace simswitch::services
