// SPDX-License-Identifier: Apache-2.0
// An expansion copies its input piece by piece and stops at three characters only: quotes,
// the backslashes in front of them, and "${". How deep quotes nest is counted and never
// looked up again, so that a text is copied in one pass, however many references it has.
//
// A lookup function may push, pop, expand and assign. So nothing that was found out before
// it was asked is believed afterwards: neither the size of the stack nor values that were
// kept. An expansion inside it has a block of its own.
#include "tools/config/vstring.h"

#include "tools/app/KazToolsContext.h"
#include "tools/config/detail/stored_value.h"
#include "tools/config/toolinfo.h"
#include "tools/containers/KazArrayPtr.h"
#include "tools/platform/processor/vector.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/or_empty.h"
#include "tools/util/memory.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

namespace {

constexpr int builtInCount = 2;

const char* lookUpSimple(const char* name) {
    KazToolsContext* context = KazToolsContext::getInstance();
    return context != nullptr ? kaz::detail::storedValue(context->refSimpleVars(), name) : nullptr;
}

const char* lookUpToolInfo(const char* name) {
    // Any name that begins so, as in "ti.x" and "title.x": the rest up to the point does not count.
    if (std::strncmp(name, "ti", 2) != 0)
        return nullptr;
    const char* point = std::strchr(name, '.');
    return point != nullptr ? TI_Vcont(point + 1) : nullptr;
}

using Lookup = const char* (*)(const char* name, void* data);

/// Asks a function that takes no data, which is itself the data here.
const char* askPlain(const char* name, void* function) {
    return reinterpret_cast<vstring_lookup_func>(function)(name);
}

/// The lookup functions, each with the data that it is called with, in two slots.
class LookupStack {
public:
    LookupStack() {
        push(askPlain, reinterpret_cast<void*>(&lookUpSimple));
        push(askPlain, reinterpret_cast<void*>(&lookUpToolInfo));
    }

    int getSize() const { return slots_.getSize() / 2; }
    void push(Lookup lookup, void* data) {
        slots_.inflate(slots_.getSize() + 2); // both, or neither when there is no memory
        slots_.add(reinterpret_cast<void*>(lookup));
        slots_.add(data);
    }
    void pop() { slots_.setSize(slots_.getSize() - 2); }
    const char* ask(int index, const char* name) const {
        return reinterpret_cast<Lookup>(slots_.getAt(2 * index))(name, slots_.getAt(2 * index + 1));
    }

private:
    KazArrayPtr slots_;
};

/// The stack, with at least the two functions at its bottom.
LookupStack& lookupStack() {
    // Never destroyed: static objects of a tool may expand texts to the very end.
    static LookupStack& stack = *new LookupStack;
    return stack;
}

void* panickingRealloc(void* block, std::size_t size, const char* function) {
    void* result = std::realloc(block, size);
    if (result == nullptr)
        memory_panic(function);
    return result;
}

using HeapText = kaz::detail::HeapPtr<char>;

/// The characters of an expansion, in a block that one expansion leaves to the
/// next. An expansion inside a lookup function finds no block and makes one.
class Output {
public:
    Output() : block_(kept), size_(keptSize), used_(0) {
        kept = nullptr;
        keptSize = 0;
        if (block_ == nullptr)
            resize(firstSize);
    }
    ~Output() {
        // The larger block stays, so that a run of expansions settles on one.
        if (keptSize < size_) {
            char* const fresh = block_.release();
            block_.reset(std::exchange(kept, fresh));
            keptSize = size_;
        }
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void append(std::string_view text) { std::memcpy(room(text.size()), text.data(), text.size()); }
    void fill(std::size_t count, char c) { std::memset(room(count), c, count); }

    const char* text() {
        *room(1) = '\0';
        return block_.get();
    }

private:
    static constexpr std::size_t firstSize = 1024;
    static constexpr std::size_t step = 200;

    char* room(std::size_t count) {
        if (count > size_ - used_)
            grow(count);
        char* place = block_.get() + used_;
        used_ += count;
        return place;
    }

    /// At least half as much again each time, so that the growth of a long text
    /// costs time in proportion to its length.
    void grow(std::size_t count) {
        const std::size_t wanted = std::max(used_ + count, size_ + size_ / 2);
        resize(size_ + (wanted - size_ + step - 1) / step * step);
    }

    void resize(std::size_t newSize) {
        // The old block is released only after the call, which does not return without memory.
        void* const grown = panickingRealloc(block_.get(), newSize, "vstring_sub");
        static_cast<void>(block_.release());
        block_.reset(static_cast<char*>(grown));
        size_ = newSize;
    }

    // Not destroyed either: texts are expanded to the very end.
    static constinit char* kept;
    static constinit std::size_t keptSize;

    HeapText block_;
    std::size_t size_;
    std::size_t used_;
};

constinit char* Output::kept = nullptr;
constinit std::size_t Output::keptSize = 0;

kaz::host::ByteSet specialCharacters() {
    kaz::host::ByteSet set;
    for (const char c : {'\\', '$', '"'})
        set.insert(c);
    return set;
}

/// What an expansion has found out about simple variables. Nothing changes them
/// while it runs, as long as no function of the tool is asked. A text of 64 KiB
/// with 900 references to four names takes 19 us so, and 59 with each looked up.
class KnownVariables {
public:
    struct Entry {
        std::string_view name;
        std::string_view value;
    };

    /// The only place for @p name; its entry may be another's.
    Entry& entryFor(std::string_view name) {
        const auto first = static_cast<unsigned char>(name.front());
        return entries_[(first + 5 * name.size()) % std::size(entries_)];
    }
    void forget() { *this = {}; }

private:
    Entry entries_[16];
};

/// One run over a text.
class Expansion {
public:
    explicit Expansion(std::string_view text) : input_(text) {}

    /// The result, good as long as this object.
    const char* run() {
        while (!input_.empty()) {
            if (input_.front() == '\\')
                takeBackslashes();
            else if (input_.starts_with("${"))
                takeReference();
            else if (input_.front() == '"')
                takeQuote();
            else
                takePlain();
        }
        return output_.text();
    }

private:
    // Beyond it the doubling of a single backslash would fill the memory.
    static constexpr unsigned depthLimit = 20;

    std::string_view next(std::size_t count) {
        const std::string_view taken = input_.substr(0, count);
        input_.remove_prefix(taken.size());
        return taken;
    }

    void takeBackslashes() {
        const std::string_view run = next(std::min(input_.find_first_not_of('\\'), input_.size()));
        output_.append(run);
        backslashes_ = run.size();
    }

    void takePlain() {
        // The first one is plain whatever it is: a "$" here begins no reference.
        const std::string_view rest = input_.substr(1);
        output_.append(next(1 + kaz::host::bytes().findIn(rest.data(), rest.size(), special_)));
        backslashes_ = 0;
    }

    void takeQuote() {
        // A quote leads deeper behind 2^(depth - 1) backslashes, at depth 0 behind none, and back
        // behind as many as the one that has opened this depth.
        const std::uint64_t nested = std::uint64_t(1) << depth_;
        if (backslashes_ == nested / 2)
            ++depth_;
        else if (backslashes_ == nested / 4)
            --depth_;
        output_.append(next(1));
        backslashes_ = 0;
    }

    void takeReference() {
        next(2);
        backslashes_ = 0;
        // Without the note a text of many openings would be searched for each.
        const std::size_t end = unclosed_ ? input_.npos : input_.find('}');
        if (end == input_.npos) {
            unclosed_ = true;
            return;
        }
        // A view into the input, which the caller keeps; lookedUp copies it to terminate it.
        const std::string_view name = next(end);
        next(1);
        appendValue(valueOf(name));
    }

    std::string_view valueOf(std::string_view name) {
        if (name.empty() || name.starts_with("ti") || lookupStack().getSize() != builtInCount) {
            // Whatever is asked now may change variables.
            known_.forget();
            return lookedUp(name);
        }
        KnownVariables::Entry& entry = known_.entryFor(name);
        if (entry.name != name)
            entry = {name, lookedUp(name)};
        return entry.value;
    }

    static std::string_view lookedUp(std::string_view name) {
        // Nearly all names fit, and cost no allocation.
        char shortName[64];
        HeapText longName;
        char* copy = shortName;
        if (name.size() >= sizeof shortName) {
            longName.reset(static_cast<char*>(
                panickingRealloc(nullptr, name.size() + 1, "vstring_replace_one_var")));
            copy = longName.get();
        }
        std::memcpy(copy, name.data(), name.size());
        copy[name.size()] = '\0';
        const char* value = vstring_lookup_var(copy);
        return kaz::detail::orEmpty(value);
    }

    void appendValue(std::string_view value) {
        for (std::size_t at = 0; depth_ > 0 && (at = value.find('\\')) != value.npos;) {
            // Fatal and no error result: a text nested so deep would take megabytes for each
            // backslash.
            if (depth_ > depthLimit)
                memory_panic("vstring_sub");
            output_.append(value.substr(0, at));
            output_.fill(std::size_t(1) << depth_, '\\');
            value.remove_prefix(at + 1);
        }
        output_.append(value);
    }

    std::string_view input_;
    Output output_;
    KnownVariables known_;
    std::uint64_t backslashes_ = 0; ///< directly before the input
    unsigned depth_ = 0;            ///< of nested quotes; each level needs twice the text
    bool unclosed_ = false;         ///< no "}" is left
    const kaz::host::ByteSet special_ = specialCharacters();
};

} // namespace

bool vstring_push_lookup_func(const char* (*lookup)(const char*)) {
    if (lookup != nullptr)
        lookupStack().push(askPlain, reinterpret_cast<void*>(lookup));
    return true;
}

bool vstring_push_lookup_func(const char* (*lookup)(const char*, void*), void* data) {
    if (lookup != nullptr)
        lookupStack().push(lookup, data);
    return true;
}

void vstring_pop_lookup_func() {
    LookupStack& stack = lookupStack();
    if (stack.getSize() > builtInCount)
        stack.pop();
}

bool vstring_clear_lookup_funcs() {
    while (lookupStack().getSize() > builtInCount)
        vstring_pop_lookup_func();
    return true;
}

void vstring_set_simple_var(const char* name, const char* value) {
    if (KazToolsContext* context = KazToolsContext::getInstance())
        context->refSimpleVars().bind(name, value, true);
}

const char* vstring_lookup_var(const char* name) {
    const LookupStack& stack = lookupStack();
    if (name == nullptr)
        name = "";
    // A function may change the stack while it is asked; those below it that are
    // still there come next.
    for (int i = stack.getSize() - 1; i >= 0; i = std::min(i, stack.getSize()) - 1)
        if (const char* value = stack.ask(i, name))
            return value;
    return nullptr;
}

int vstring_num_vars(const char* text) {
    int count = 0;
    for (; text != nullptr && *text != '\0'; ++text) {
        if (*text == '\\' && text[1] != '\0')
            ++text;
        else if (*text == '$' && text[1] == '{')
            ++count;
    }
    return count;
}

bool vstring_sub(const char* text, char** result) {
    if (result == nullptr)
        return false;
    *result = mkcpy(Expansion(kaz::detail::orEmpty(text)).run());
    return true;
}

KazString vstring_sub(const char* text) {
    return Expansion(kaz::detail::orEmpty(text)).run();
}
