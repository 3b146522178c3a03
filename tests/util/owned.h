// SPDX-License-Identifier: Apache-2.0
/// @file
/// Objects of the plain functions in the hands of a test, and small integers as
/// elements.
#pragma once

#include "tools/util/bitvec.h"
#include "tools/util/gu_index_list.h"
#include "tools/util/gu_list.h"
#include "tools/util/gu_queue.h"
#include "tools/util/gu_set.h"
#include "tools/util/string_map.h"
#include "tools/util/text.h"
#include "tools/util/tree.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

struct Destroy {
    void operator()(char* text) const { std::free(text); }
    void operator()(_bvs_* bits) const { bitvec_delete(bits); }
    void operator()(gu_list* list) const { gu_list_destroy(list); }
    void operator()(gu_queue* queue) const { gu_queue_destroy(queue); }
    void operator()(gu_set* set) const { gu_set_destroy(set); }
    void operator()(gu_index_list* list) const { gu_index_list_destroy(list); }
    void operator()(string_map_tp* map) const { string_map_destroy(&map); }
    void operator()(dd_buffer* buffer) const { dd_destroy(buffer); }
    void operator()(generic_tree* tree) const { delete_tree(tree, nullptr); }
};
template <typename T>
using Owned = std::unique_ptr<T, Destroy>;

inline void* element(int value) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
}
inline int number(const void* value) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(value));
}

/// The text as a string; frees it.
inline std::string take(char* text) {
    const Owned<char> owner(text);
    return text != nullptr ? text : "(null)";
}
