// SPDX-License-Identifier: Apache-2.0
// Lists, queues, sets and index lists against std::list, std::deque and std::set.
#include "fuzz/harness.h"
#include "testkit/counted.h"
#include "util/owned.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <deque>
#include <iterator>
#include <list>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace {

using fuzz::Input;
using moxkit::Counted;

template <typename Operation>
std::set<int> combine(const std::set<int>& a, const std::set<int>& b, Operation operation) {
    std::set<int> result;
    operation(a.begin(), a.end(), b.begin(), b.end(), std::inserter(result, result.end()));
    return result;
}

std::set<int> united(const std::set<int>& a, const std::set<int>& b) {
    return combine(a, b, [](auto... x) { std::set_union(x...); });
}
std::set<int> common(const std::set<int>& a, const std::set<int>& b) {
    return combine(a, b, [](auto... x) { std::set_intersection(x...); });
}
std::set<int> without(const std::set<int>& a, const std::set<int>& b) {
    return combine(a, b, [](auto... x) { std::set_difference(x...); });
}

// ---- Lists

int byTens(const void* a, const void* b) {
    return number(a) / 10 - number(b) / 10;
}

void compareLists(const gu_list* list, const std::list<int>& model) {
    gu_list_node* up = gu_list_first(list);
    for (const int value : model) {
        FUZZ_CHECK(up != nullptr && number(gu_list_element(up)) == value);
        up = gu_list_next(up);
    }
    gu_list_node* down = gu_list_last(list);
    for (auto value = model.rbegin(); value != model.rend(); ++value, down = gu_list_prev(down))
        FUZZ_CHECK(number(gu_list_element(down)) == *value);
    FUZZ_CHECK(up == nullptr && down == nullptr);
    FUZZ_CHECK(gu_list_size(list) == static_cast<int>(model.size()));
}

void changeList(Input& input, fuzz::Failures& failures, gu_list* list, std::list<int>& model) {
    const int value = input.between(0, 49);
    const int at = input.between(0, static_cast<int>(model.size()));
    const auto place = std::next(model.begin(), at);
    gu_list_node* node = gu_list_at(list, at);
    FUZZ_CHECK((place == model.end()) == (node == nullptr));
    const auto unchanged = [&] { compareLists(list, model); };
    const auto tensBefore = [](int a, int b) { return a / 10 < b / 10; };
    const int operation = input.between(0, 8);
    if (operation == 0) {
        failures.step([&] { gu_list_insert_before(list, node, element(value)); }, unchanged);
        model.insert(place, value);
    } else if (operation == 1) {
        failures.step(
            [&] {
                FUZZ_CHECK(gu_list_element(gu_list_insert_after(list, node, element(value))) ==
                           element(value));
            },
            unchanged);
        model.insert(node != nullptr ? std::next(place) : model.begin(), value);
    } else if (operation == 2) {
        const auto first = std::find(model.begin(), model.end(), value);
        FUZZ_CHECK(gu_list_remove(list, element(value)) == (first != model.end()));
        if (first != model.end())
            model.erase(first);
    } else if (operation == 3) {
        gu_list_node* next = gu_list_next(node);
        FUZZ_CHECK(gu_list_remove_node(list, node) == next);
        if (place != model.end())
            model.erase(place);
    } else if (operation == 4) {
        FUZZ_CHECK(gu_list_take_last(list) == element(model.empty() ? 0 : model.back()));
        if (!model.empty())
            model.pop_back();
    } else if (operation == 5) {
        gu_list_reverse(list);
        model.reverse();
    } else if (operation == 6) { // all tens are equal: only a stable sort agrees
        gu_list_sort(list, byTens);
        model.sort(tensBefore);
        failures.step([&] { gu_list_insert_sorted(list, element(value), byTens); }, unchanged);
        model.insert(std::upper_bound(model.begin(), model.end(), value, tensBefore), value);
    } else if (operation == 7) {
        const Owned<gu_list> other(failures.ask([&] { return gu_list_copy(list, nullptr); }));
        compareLists(other.get(), model);
        if (model.size() <= 100) {
            gu_list_concat(list, other.get());
            gu_list_concat(list, list);
            FUZZ_CHECK(gu_list_size(other.get()) == 0);
            std::list<int> again(model);
            model.splice(model.end(), again);
        }
    } else {
        if (node != nullptr) {
            FUZZ_CHECK(gu_list_set_element(node, element(value)) == element(*place));
            *place = value;
        }
    }
}

/// An action may remove the element that it is called for.
void actionsMayRemove(gu_list* list, std::list<int>& model) {
    const auto removeEven = [](void* e, void* from) {
        if (number(e) % 2 == 0)
            gu_list_remove(static_cast<gu_list*>(from), e);
    };
    gu_list_foreach(list, removeEven, list);
    model.remove_if([](int value) { return value % 2 == 0; });
    compareLists(list, model);
}

void listsFollowTheModel(Input& input) {
    fuzz::Failures failures(input);
    const Owned<gu_list> list(gu_list_create(nullptr));
    std::list<int> model;
    for (std::size_t work = 0; !input.empty() && work < 100000; work += model.size() + 1) {
        changeList(input, failures, list.get(), model);
        compareLists(list.get(), model);
    }
    actionsMayRemove(list.get(), model);
}

/// Elements that a list or queue owns, made again by their release for a while.
int alive = 0;
gu_list* refilledList = nullptr;
gu_queue* refilledQueue = nullptr;

void releaseAndRefill(void* owned) {
    const std::unique_ptr<int> value(static_cast<int*>(owned));
    --alive;
    if (*value == 0)
        return;
    ++alive;
    if (refilledList != nullptr)
        gu_list_append(refilledList, new int(*value - 1));
    else
        gu_queue_add(refilledQueue, new int(*value - 1));
}

void ownedElementsAreReleased(Input& input) {
    for (const bool asList : {true, false}) {
        gu_list* list = asList ? gu_list_create(releaseAndRefill) : nullptr;
        gu_queue* queue = asList ? nullptr : gu_queue_create(releaseAndRefill);
        refilledList = list;
        refilledQueue = queue;
        for (int n = input.between(0, 20); n > 0; --n, ++alive) {
            auto* value = new int(input.between(0, 3));
            asList ? void(gu_list_prepend(list, value)) : gu_queue_add(queue, value);
        }
        if (input.flag())
            gu_list_remove_node(list, gu_list_at(list, input.between(0, 20)));
        gu_list_destroy(list);
        gu_queue_destroy(queue);
        FUZZ_CHECK(alive == 0);
    }
}

/// No copy is released that was never made.
void releaseMade(void* element) {
    FUZZ_CHECK(element != nullptr);
    Counted::checkOut(element);
}

/// Copies own copies, all of them or none.
void copiesOwnTheirElements(Input& input) {
    fuzz::Failures failures(input);
    {
        const Owned<gu_list> list(gu_list_create(releaseMade));
        const Owned<gu_queue> queue(gu_queue_create(releaseMade));
        for (int n = input.between(0, 20); n > 0; --n) {
            gu_list_append(list.get(), new Counted(n));
            gu_queue_add(queue.get(), new Counted(n));
        }
        const bool holdsThree = Counted::live() >= 6;
        const auto makeAgain = [&failures](auto& copy, auto make) {
            const int live = Counted::live();
            for (int n = 0; n < 16; ++n) { // one allocation among others tells
                copy.reset();
                failures.step([&] { copy.reset(make()); },
                              [&] { FUZZ_CHECK(Counted::live() == live); });
            }
        };
        Owned<gu_list> copy;
        makeAgain(copy, [&] { return gu_list_copy(list.get(), Counted::checkIn); });
        delete static_cast<Counted*>(gu_list_take_first(copy.get()));
        gu_list_concat(list.get(), copy.get()); // moved nodes belong to their new list
        copy.reset();
        Owned<gu_queue> copied;
        makeAgain(copied, [&] { return gu_queue_copy(queue.get(), Counted::checkIn); });
        const Owned<gu_list> shared(gu_list_copy(list.get(), nullptr));
        const Owned<gu_queue> sharedQueue(gu_queue_copy(queue.get(), nullptr));
        FUZZ_CHECK(gu_list_size(shared.get()) == gu_list_size(list.get()));
        const Counted probe(3);
        gu_list_node* found = gu_list_find_by(list.get(), &probe, Counted::compare);
        FUZZ_CHECK((found != nullptr) == holdsThree);
        gu_list_remove_node(list.get(), found);
        delete static_cast<Counted*>(gu_queue_take(queue.get()));
    }
    FUZZ_CHECK(Counted::live() == 0);
}

// ---- Queues

void queuesFollowTheModel(Input& input) {
    fuzz::Failures failures(input);
    const Owned<gu_queue> queue(gu_queue_create(nullptr));
    std::deque<int> model;
    for (int value = 1; !input.empty() && value < 100000; ++value) {
        if (input.between(0, 2) == 0) {
            FUZZ_CHECK(gu_queue_take(queue.get()) == element(model.empty() ? 0 : model.front()));
            if (!model.empty())
                model.pop_front();
        } else {
            failures.step(
                [&] { gu_queue_add(queue.get(), element(value)); },
                [&] { FUZZ_CHECK(gu_queue_size(queue.get()) == static_cast<int>(model.size())); });
            model.push_back(value);
        }
        const int size = static_cast<int>(model.size());
        FUZZ_CHECK(gu_queue_size(queue.get()) == size);
        FUZZ_CHECK(gu_queue_first(queue.get()) == element(size > 0 ? model.front() : 0));
        FUZZ_CHECK(gu_queue_last(queue.get()) == element(size > 0 ? model.back() : 0));
    }
    const Owned<gu_queue> copy(gu_queue_copy(queue.get(), nullptr));
    for (std::size_t i = 0; i < model.size(); ++i)
        FUZZ_CHECK(gu_queue_at(queue.get(), static_cast<int>(i)) == element(model[i]));
    FUZZ_CHECK(gu_queue_at(queue.get(), static_cast<int>(model.size())) == nullptr);
    std::deque<int> met;
    const auto note = [](void* e, void* to) {
        static_cast<std::deque<int>*>(to)->push_back(number(e));
    };
    gu_queue_foreach(copy.get(), note, &met);
    FUZZ_CHECK(met == model && !gu_queue_contains(queue.get(), nullptr));
    FUZZ_CHECK(model.empty() || gu_queue_contains(queue.get(), element(model.back())));
}

// ---- Sets, in the order of adding

struct SetPair {
    SetPair(int hint, fuzz::Failures& source) : set(gu_set_create(hint)), failures(source) {}

    void change(Input& input) {
        const int value = input.between(-60, 60);
        if (input.between(0, 2) == 0) {
            FUZZ_CHECK(gu_set_remove(set.get(), element(value)) == (model.erase(value) == 1));
            order.erase(std::remove(order.begin(), order.end(), value), order.end());
        } else {
            const bool isNew = model.insert(value).second;
            failures.step([&] { FUZZ_CHECK(gu_set_add(set.get(), element(value)) == isNew); },
                          [&] { FUZZ_CHECK(!gu_set_contains(set.get(), element(value))); });
            if (isNew)
                order.push_back(value);
        }
        FUZZ_CHECK(gu_set_contains(set.get(), element(value)) == (model.count(value) == 1));
        FUZZ_CHECK(gu_set_size(set.get()) == static_cast<int>(model.size()));
    }

    Owned<gu_set> set;
    fuzz::Failures& failures;
    std::set<int> model;
    std::vector<int> order;
};

std::vector<int> inOrder(const gu_set* set) {
    std::vector<int> elements;
    for (auto i = gu_set_init(set); !gu_set_done(i); gu_set_next(&i))
        elements.push_back(number(gu_set_element(i)));
    return elements;
}

/// Checks the content of a set that is then destroyed.
void isSet(gu_set* result, const std::set<int>& expected) {
    const Owned<gu_set> owner(result);
    std::vector<int> elements = inOrder(result);
    std::sort(elements.begin(), elements.end());
    FUZZ_CHECK(elements == std::vector<int>(expected.begin(), expected.end()));
}

/// A visit may remove its element and any other: each that is left is met once, in order.
void twoGoAtEachVisit(SetPair& pair) {
    std::vector<int> expected, met;
    std::set<int> left = pair.model;
    for (const int value : pair.order)
        if (left.erase(value) == 1) {
            expected.push_back(value);
            left.erase(value + 1);
        }
    static std::pair<gu_set*, std::vector<int>*> visit;
    visit = {pair.set.get(), &met};
    const auto removeTwo = [](void* e, void*) {
        visit.second->push_back(number(e));
        gu_set_remove(visit.first, e);
        gu_set_remove(visit.first, element(number(e) + 1));
    };
    gu_set_foreach(pair.set.get(), removeTwo, nullptr);
    FUZZ_CHECK(met == expected && gu_set_size(pair.set.get()) == 0);
}

void setsFollowTheModel(Input& input) {
    fuzz::Failures failures(input);
    SetPair one(input.between(-1, 30), failures);
    SetPair two(input.pick(std::vector{0, 1000, INT_MAX}), failures);
    for (int steps = 0; !input.empty() && steps < 3000; ++steps)
        (input.flag() ? one : two).change(input);
    const SetPair& other = input.flag() ? one : two;
    gu_set* a = one.set.get();
    const gu_set* b = other.set.get();
    FUZZ_CHECK(inOrder(a) == one.order);
    const std::set<int> all = united(one.model, other.model);
    const std::set<int> both = common(one.model, other.model);
    const std::set<int> onlyA = without(one.model, other.model);
    const std::set<int> onlyB = without(other.model, one.model);
    isSet(failures.ask([&] { return gu_set_union(a, b); }), all);
    isSet(failures.ask([&] { return gu_set_intersection(a, b); }), both);
    isSet(failures.ask([&] { return gu_set_difference(a, b); }), onlyA);
    isSet(failures.ask([&] { return gu_set_symmetric_difference(a, b); }), united(onlyA, onlyB));
    FUZZ_CHECK(gu_set_subset(a, b) == onlyA.empty());
    FUZZ_CHECK(gu_set_equal(a, b) == (one.model == other.model));
    FUZZ_CHECK(gu_set_disjoint(a, b) == both.empty());
    const struct {
        int (*change)(gu_set*, const gu_set*);
        const std::set<int>& result;
    } changes[] = {{gu_set_add_all, all}, {gu_set_remove_all, onlyA}, {gu_set_retain_all, both}};
    for (const auto& row : changes) {
        const auto change = row.change; // a lambda may not take the name of a part
        const std::set<int>& result = row.result;
        const Owned<gu_set> copy(gu_set_copy(a));
        FUZZ_CHECK(inOrder(copy.get()) == one.order);
        const int difference = static_cast<int>(result.size()) - static_cast<int>(one.model.size());
        failures.step([&] { FUZZ_CHECK(change(copy.get(), b) == std::abs(difference)); },
                      [&] { FUZZ_CHECK(inOrder(copy.get()) == one.order); });
        isSet(gu_set_copy(copy.get()), result);
        gu_set_iterator begun = gu_set_init(copy.get());
        gu_set_clear(copy.get());
        FUZZ_CHECK(gu_set_done(begun) && gu_set_element(begun) == nullptr);
        gu_set_next(&begun);
        FUZZ_CHECK(gu_set_done(begun));
        FUZZ_CHECK(gu_set_add(copy.get(), nullptr) && gu_set_size(copy.get()) == 1);
    }
    twoGoAtEachVisit(one);
}

// ---- Index lists

std::string textOf(const gu_index_list* list) {
    return take(gu_index_list_text(list));
}

/// The text form by the definition: neighbours joined.
std::string textOf(const std::set<int>& model) {
    std::string text;
    for (auto i = model.begin(); i != model.end();) {
        const int first = *i;
        int last = first;
        while (++i != model.end() && *i == last + 1)
            ++last;
        text += (text.empty() ? "" : ",") + std::to_string(first);
        text += last > first ? "-" + std::to_string(last) : "";
    }
    return text;
}

void isList(gu_index_list* result, const std::set<int>& expected) {
    const Owned<gu_index_list> owner(result);
    FUZZ_CHECK(textOf(result) == textOf(expected));
}

void changeIndices(Input& input, fuzz::Failures& failures, gu_index_list* list,
                   std::set<int>& model) {
    const int first = input.between(-60, 60);
    const int last = first + input.between(-2, 9);
    const bool adding = input.flag();
    const auto unchanged = [&] { FUZZ_CHECK(textOf(list) == textOf(model)); };
    if (last == first) {
        const bool changed = adding != (model.count(first) == 1);
        failures.step(
            [&] {
                const auto change = adding ? gu_index_list_add : gu_index_list_remove;
                FUZZ_CHECK(change(list, first) == changed);
            },
            unchanged);
        adding ? void(model.insert(first)) : void(model.erase(first));
        return;
    }
    failures.step(
        [&] { (adding ? gu_index_list_add_range : gu_index_list_remove_range)(list, first, last); },
        unchanged);
    for (int i = first; i <= last; ++i)
        adding ? void(model.insert(i)) : void(model.erase(i));
}

void indexListsFollowTheModel(Input& input) {
    fuzz::Failures failures(input);
    const Owned<gu_index_list> a(gu_index_list_create()), b(gu_index_list_create());
    std::set<int> x, y;
    for (int steps = 0; !input.empty() && steps < 2000; ++steps) {
        changeIndices(input, failures, a.get(), x);
        FUZZ_CHECK(textOf(a.get()) == textOf(x));
        changeIndices(input, failures, b.get(), y);
    }
    std::set<int> met;
    for (auto i = gu_index_list_init(a.get()); !gu_index_list_done(i); gu_index_list_next(&i))
        met.insert(met.end(), i.index);
    FUZZ_CHECK(met == x && gu_index_list_size(a.get()) == static_cast<long long>(x.size()));
    for (int i = -75; i < 75; ++i)
        FUZZ_CHECK(gu_index_list_contains(a.get(), i) == (x.count(i) == 1));
    isList(failures.ask([&] { return gu_index_list_union(a.get(), b.get()); }), united(x, y));
    isList(gu_index_list_intersection(a.get(), b.get()), common(x, y));
    isList(gu_index_list_difference(a.get(), b.get()), without(x, y));
    FUZZ_CHECK(gu_index_list_subset(a.get(), b.get()) == without(x, y).empty());
    FUZZ_CHECK(gu_index_list_equal(a.get(), b.get()) == (x == y));
    failures.step([&] { gu_index_list_add_all(a.get(), b.get()); },
                  [&] { FUZZ_CHECK(textOf(a.get()) == textOf(x)); });
    FUZZ_CHECK(textOf(a.get()) == textOf(united(x, y)));
}

/// What can be read is written so that it reads the same; the rest is refused at
/// a place inside the text.
void textFormIsRead(Input& input) {
    fuzz::Failures failures(input);
    const std::string text = input.textOf("0123456789-, ", 4096);
    int position = -2;
    const Owned<gu_index_list> list(
        failures.ask([&] { return gu_index_list_parse(text.c_str(), &position); }));
    if (!list) {
        FUZZ_CHECK(position >= 0 && position <= static_cast<int>(text.size()));
        return;
    }
    FUZZ_CHECK(position == -1);
    const std::string written = textOf(list.get());
    const Owned<gu_index_list> again(gu_index_list_parse(written.c_str(), &position));
    FUZZ_CHECK(again && position == -1 && gu_index_list_equal(list.get(), again.get()));
    FUZZ_CHECK(gu_index_list_range_count(list.get()) ==
               (written.empty() ? 0 : 1 + std::count(written.begin(), written.end(), ',')));
}

/// A null container reads as empty, and nothing can be added to it.
void nullReadsAsEmpty() {
    int element = 0;
    gu_list_clear(nullptr);
    FUZZ_CHECK(!gu_list_append(nullptr, &element) && !gu_list_prepend(nullptr, &element));
    FUZZ_CHECK(!gu_list_insert_before(nullptr, nullptr, &element));
    FUZZ_CHECK(!gu_list_insert_after(nullptr, nullptr, &element));
    FUZZ_CHECK(!gu_list_last(nullptr) && !gu_list_at(nullptr, 0) && !gu_list_prev(nullptr));
    FUZZ_CHECK(!gu_list_element(nullptr) && !gu_list_set_element(nullptr, &element));
    const Owned<gu_list> list(gu_list_create(nullptr)), other(gu_list_create(nullptr));
    gu_list_append(other.get(), &element);
    gu_list_concat(nullptr, other.get());
    gu_list_concat(list.get(), nullptr);
    FUZZ_CHECK(gu_list_size(other.get()) == 1 && gu_list_size(list.get()) == 0);
    gu_list_concat(list.get(), other.get());
    FUZZ_CHECK(gu_list_size(other.get()) == 0 && gu_list_size(list.get()) == 1);
    FUZZ_CHECK(gu_list_element(gu_list_last(list.get())) == &element);
    const Owned<gu_index_list> none(gu_index_list_parse("", nullptr));
    FUZZ_CHECK(!gu_list_take_first(nullptr) && !gu_list_remove(nullptr, nullptr));
    gu_list_sort(nullptr, Counted::compare);
    gu_list_reverse(nullptr);
    gu_list_destroy(nullptr);
    const Owned<gu_list> noList(gu_list_copy(nullptr, Counted::checkIn));
    FUZZ_CHECK(gu_list_size(noList.get()) == 0);
    gu_queue_add(nullptr, nullptr);
    FUZZ_CHECK(!gu_queue_take(nullptr) && !gu_queue_last(nullptr));
    gu_queue_destroy(nullptr);
    FUZZ_CHECK(!gu_set_add(nullptr, nullptr) && !gu_set_remove(nullptr, nullptr));
    FUZZ_CHECK(gu_set_add_all(nullptr, nullptr) == 0);
    gu_set_clear(nullptr);
    gu_set_foreach(nullptr, nullptr, nullptr);
    const Owned<gu_set> noSet(gu_set_copy(nullptr));
    FUZZ_CHECK(gu_set_equal(noSet.get(), nullptr) && gu_set_subset(nullptr, noSet.get()));
    gu_index_list_add(nullptr, 1);
    FUZZ_CHECK(gu_index_list_size(nullptr) == 0);
    FUZZ_CHECK(gu_index_list_done(gu_index_list_init(nullptr)));
    gu_index_list_destroy(nullptr);
    gu_index_list_add_all(nullptr, none.get());
    gu_index_list_next(nullptr);
    gu_set_destroy(nullptr);
}

} // namespace

void fuzz::harness(Input& input) {
    void (*const parts[])(Input&) = {listsFollowTheModel,   queuesFollowTheModel,
                                     setsFollowTheModel,    indexListsFollowTheModel,
                                     textFormIsRead,        ownedElementsAreReleased,
                                     copiesOwnTheirElements};
    input.pick(parts)(input);
    nullReadsAsEmpty();
}
