/*
 * services/avl.h: balanced ordered trees of records.
 */
#ifndef SERVICES_AVL_H
#define SERVICES_AVL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A node: four words of the tree's own, then the payload. */
typedef struct avl_node {
    void *link[3];    /**< parent, left, right */
    intptr_t balance; /**< the tree's own */
    void *payload;    /**< the record that was inserted */
} avl_node_t;

/** The order of a tree: negative, 0 or positive as a sorts before, with or after b. */
typedef int (*avl_compare_t)(const void *a, const void *b);

/** A tree's handle. */
typedef struct avl_tree {
    uint32_t count;        /**< number of records in the tree */
    avl_compare_t compare; /**< the order */
    void *nodes;           /**< the tree's own */
} avl_tree_t;

/**
 * Creates an empty tree.
 *
 * @param compare  the order
 * @param flags    0
 * @return the handle; null when memory is out
 */
avl_tree_t *avl_create(avl_compare_t compare, int flags);

/**
 * Puts a record into a tree, which keeps the pointer.
 *
 * @param tree    the tree
 * @param record  the record
 * @return 0; nonzero when a record of that key is there, or memory is out
 */
int avl_insert(avl_tree_t *tree, void *record);

/**
 * Looks a record up.
 *
 * @param tree  the tree
 * @param key   a record that compares equal to the one looked for
 * @return the record; null when there is none
 */
void *avl_find(avl_tree_t *tree, const void *key);

/**
 * Gives the record that sorts next after a key, strictly, whether or not the
 * key is itself in the tree.
 *
 * @param tree  the tree
 * @param key   the key
 * @return the record; null after the last
 */
void *avl_find_next(avl_tree_t *tree, const void *key);

/**
 * Takes a record out of a tree and doesn't free it.
 *
 * @param tree  the tree
 * @param key   a record that compares equal
 * @return the record; null when there was none
 */
void *avl_delete(avl_tree_t *tree, const void *key);

/**
 * Gives a tree's first node.
 *
 * @param tree  the tree
 * @return the node; null when the tree is empty
 */
avl_node_t *avl_get_first(avl_tree_t *tree);

/**
 * Gives the node after a node.
 *
 * @param tree  the tree
 * @param node  the node
 * @return the next node in the tree's order; null after the last
 */
avl_node_t *avl_get_next(avl_tree_t *tree, avl_node_t *node);

#ifdef __cplusplus
}
#endif

#endif
