// SPDX-License-Identifier: Apache-2.0
// A node with a null neighbour is the end that the list points to on that side; an empty
// list points to none. Links forth and back agree except while a list is sorted, which
// goes by the links forth alone and sets the others at its end.
//
// Callers hold nodes as positions, so an element keeps its node as long as it is in the
// list. A release function may change the list that calls it: the node has left by then.
#include "tools/util/gu_list.h"

#include "tools/util/detail/panic.h"
#include "tools/util/memory.h"

#include <climits>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

struct gu_list_node {
    void* element;
    gu_list_node* next;
    gu_list_node* prev;
};

struct gu_list {
    gu_list_node* first;
    gu_list_node* last;
    int size;
    gu_list_release release;
};

namespace {

struct DestroyList {
    void operator()(gu_list* list) const { gu_list_destroy(list); }
};

/// Links a new node between two neighbours, of which either may be missing.
gu_list_node* insertBetween(gu_list* list, gu_list_node* prev, gu_list_node* next, void* element,
                            const char* functionName) {
    if (list->size == INT_MAX)
        memory_panic(functionName);
    void* block = kaz::detail::allocateOrPanic(sizeof(gu_list_node), functionName);
    auto* node = new (block) gu_list_node{element, next, prev};
    (prev != nullptr ? prev->next : list->first) = node;
    (next != nullptr ? next->prev : list->last) = node;
    ++list->size;
    return node;
}

void drop(gu_list* list, void* element) {
    if (list->release != nullptr)
        list->release(element);
}

/// Cuts the chain behind its first @p count nodes; gives the rest.
gu_list_node* split(gu_list_node* chain, int count) {
    while (chain != nullptr && --count > 0)
        chain = chain->next;
    return chain != nullptr ? std::exchange(chain->next, nullptr) : nullptr;
}

/// Merges two sorted chains behind @p link, by their next links only, the left
/// one first among equals; gives the link at the end.
gu_list_node** merge(gu_list_node** link, gu_list_node* left, gu_list_node* right,
                     gu_list_compare compare) {
    while (left != nullptr || right != nullptr) {
        const bool takeLeft =
            // Left among equals: the sort is stable.
            left != nullptr && (right == nullptr || compare(left->element, right->element) <= 0);
        gu_list_node*& from = takeLeft ? left : right;
        *link = from;
        link = &from->next;
        from = from->next;
    }
    return link;
}

/// One pass: merges neighbouring runs of @p width nodes each.
void mergeRuns(gu_list* list, int width, gu_list_compare compare) {
    gu_list_node* rest = list->first;
    gu_list_node** link = &list->first;
    while (rest != nullptr) {
        gu_list_node* left = rest;
        gu_list_node* right = split(left, width);
        rest = split(right, width);
        link = merge(link, left, right, compare);
    }
    *link = nullptr;
}

/// Sets the links back and the last node from the links forth.
void restoreBackLinks(gu_list* list) {
    gu_list_node* prev = nullptr;
    for (gu_list_node* node = list->first; node != nullptr; node = node->next)
        node->prev = std::exchange(prev, node);
    list->last = prev;
}

} // namespace

gu_list* gu_list_create(gu_list_release release) {
    void* block = kaz::detail::allocateOrPanic(sizeof(gu_list), "gu_list_create");
    return new (block) gu_list{nullptr, nullptr, 0, release};
}

void gu_list_destroy(gu_list* list) {
    // More than once, should a release function add something.
    while (gu_list_size(list) > 0)
        gu_list_clear(list);
    std::free(list);
}

void gu_list_clear(gu_list* list) {
    if (list == nullptr)
        return;
    // Emptied before the first release function is called, which may look at the list or add to
    // it.
    gu_list_node* node = std::exchange(list->first, nullptr);
    list->last = nullptr;
    list->size = 0;
    while (node != nullptr) {
        gu_list_node* next = node->next;
        drop(list, node->element);
        std::free(node);
        node = next;
    }
}

gu_list* gu_list_copy(const gu_list* list, gu_list_copy_element copy) {
    const bool owns = copy != nullptr && list != nullptr;
    std::unique_ptr<gu_list, DestroyList> result(gu_list_create(owns ? list->release : nullptr));
    for (gu_list_node* node = gu_list_first(list); node != nullptr; node = node->next) {
        // The node comes first: nothing is lost when there is no memory for it.
        gu_list_node* added = gu_list_append(result.get(), nullptr);
        if (copy == nullptr) {
            added->element = node->element;
            continue;
        }
        // An element that could not be copied must not be released either.
        struct Undo {
            gu_list* list;
            ~Undo() {
                if (list != nullptr)
                    gu_list_take_last(list);
            }
        } undo{result.get()};
        added->element = copy(node->element);
        undo.list = nullptr;
    }
    return result.release();
}

gu_list_node* gu_list_append(gu_list* list, void* element) {
    return gu_list_insert_before(list, nullptr, element);
}

gu_list_node* gu_list_prepend(gu_list* list, void* element) {
    return gu_list_insert_after(list, nullptr, element);
}

gu_list_node* gu_list_insert_before(gu_list* list, gu_list_node* node, void* element) {
    if (list == nullptr)
        return nullptr;
    gu_list_node* prev = node != nullptr ? node->prev : list->last;
    return insertBetween(list, prev, node, element, "gu_list_insert_before");
}

gu_list_node* gu_list_insert_after(gu_list* list, gu_list_node* node, void* element) {
    if (list == nullptr)
        return nullptr;
    gu_list_node* next = node != nullptr ? node->next : list->first;
    return insertBetween(list, node, next, element, "gu_list_insert_after");
}

/// From the end, behind equal ones: what comes in order is added in constant time.
gu_list_node* gu_list_insert_sorted(gu_list* list, void* element, gu_list_compare compare) {
    gu_list_node* node = gu_list_last(list);
    while (node != nullptr && compare(node->element, element) > 0)
        node = node->prev;
    return gu_list_insert_after(list, node, element);
}

bool gu_list_remove(gu_list* list, const void* element) {
    gu_list_node* node = gu_list_find(list, element);
    gu_list_remove_node(list, node);
    return node != nullptr;
}

gu_list_node* gu_list_remove_node(gu_list* list, gu_list_node* node) {
    if (list == nullptr || node == nullptr)
        return nullptr;
    // Known before the element is released: the release function may change the list, but must
    // not remove this one.
    gu_list_node* next = node->next;
    drop(list, gu_list_take_node(list, node));
    return next;
}

void* gu_list_take_node(gu_list* list, gu_list_node* node) {
    if (list == nullptr || node == nullptr)
        return nullptr;
    (node->prev != nullptr ? node->prev->next : list->first) = node->next;
    (node->next != nullptr ? node->next->prev : list->last) = node->prev;
    --list->size;
    void* element = node->element;
    std::free(node);
    return element;
}

void* gu_list_take_first(gu_list* list) {
    return gu_list_take_node(list, gu_list_first(list));
}

void* gu_list_take_last(gu_list* list) {
    return gu_list_take_node(list, gu_list_last(list));
}

gu_list_node* gu_list_first(const gu_list* list) {
    return list != nullptr ? list->first : nullptr;
}

gu_list_node* gu_list_last(const gu_list* list) {
    return list != nullptr ? list->last : nullptr;
}

gu_list_node* gu_list_next(const gu_list_node* node) {
    return node != nullptr ? node->next : nullptr;
}

gu_list_node* gu_list_prev(const gu_list_node* node) {
    return node != nullptr ? node->prev : nullptr;
}

void* gu_list_element(const gu_list_node* node) {
    return node != nullptr ? node->element : nullptr;
}

void* gu_list_set_element(gu_list_node* node, void* element) {
    return node != nullptr ? std::exchange(node->element, element) : nullptr;
}

gu_list_node* gu_list_find(const gu_list* list, const void* element) {
    gu_list_node* node = gu_list_first(list);
    while (node != nullptr && node->element != element)
        node = node->next;
    return node;
}

gu_list_node* gu_list_find_by(const gu_list* list, const void* key, gu_list_compare compare) {
    gu_list_node* node = gu_list_first(list);
    while (node != nullptr && compare(node->element, key) != 0)
        node = node->next;
    return node;
}

gu_list_node* gu_list_at(const gu_list* list, int index) {
    const int size = gu_list_size(list);
    if (index < 0 || index >= size)
        return nullptr;
    gu_list_node* node = index < size / 2 ? list->first : list->last;
    if (index < size / 2)
        for (; index > 0; --index)
            node = node->next;
    else
        for (; index < size - 1; ++index)
            node = node->prev;
    return node;
}

int gu_list_size(const gu_list* list) {
    return list != nullptr ? list->size : 0;
}

/// The action may remove its own element.
void gu_list_foreach(const gu_list* list, gu_list_action action, void* data) {
    for (gu_list_node* node = gu_list_first(list); action != nullptr && node != nullptr;) {
        gu_list_node* next = node->next;
        action(node->element, data);
        node = next;
    }
}

void gu_list_concat(gu_list* list, gu_list* other) {
    if (list == nullptr || other == nullptr || list == other || other->first == nullptr)
        return;
    if (list->size > INT_MAX - other->size)
        memory_panic("gu_list_concat");
    (list->last != nullptr ? list->last->next : list->first) = other->first;
    other->first->prev = list->last;
    list->last = other->last;
    list->size += other->size;
    // Empty and still usable, with its own release function.
    *other = gu_list{nullptr, nullptr, 0, other->release};
}

void gu_list_reverse(gu_list* list) {
    if (list == nullptr)
        return;
    // Behind the swap `prev` leads on.
    for (gu_list_node* node = list->first; node != nullptr; node = node->prev)
        std::swap(node->next, node->prev);
    std::swap(list->first, list->last);
}

/// Merging from below: n log n steps, no recursion, no memory, and each element keeps its node.
void gu_list_sort(gu_list* list, gu_list_compare compare) {
    if (gu_list_size(list) < 2)
        return;
    for (long long width = 1; width < list->size; width *= 2)
        mergeRuns(list, static_cast<int>(width), compare);
    restoreBackLinks(list);
}
