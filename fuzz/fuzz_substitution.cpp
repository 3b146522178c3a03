// SPDX-License-Identifier: Apache-2.0
// Expansion of references: tools push and pop lookup functions, set variables and
// expand texts, and a model that reads them character by character agrees.
#include "fuzz/harness.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "tools/app/KazMasterContext.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Answer = std::optional<std::string>;
using Variables = std::map<std::string, std::string>;

Answer valueIn(const Variables& variables, const std::string& name) {
    const auto found = variables.find(name);
    return found != variables.end() ? Answer(found->second) : std::nullopt;
}

std::string expand(const char* text) {
    char* result = nullptr;
    FUZZ_CHECK(vstring_sub(text, &result));
    const std::unique_ptr<char, decltype(&std::free)> owner(result, std::free);
    return result;
}

// ---------------------------------------------------------- functions that tools push

Variables own;
constexpr const char* nested = "<${a}\\${ti.x}\">";

const char* fromOwn(const char* name, void* data) {
    const auto& variables = *static_cast<const Variables*>(data);
    const auto found = variables.find(name);
    return found != variables.end() ? found->second.c_str() : nullptr;
}

const char* always(const char*) {
    return "all\\";
}

/// Knows one name, by an expansion of its own.
const char* byExpansion(const char* name) {
    static std::string value;
    if (std::string(name) != "nested")
        return nullptr;
    value = expand(nested);
    return value.c_str();
}

// ------------------------------------------------------------------- the model

/// More than memory can hold can be asked for; what is too much for a test ends it.
struct TooLong {};
constexpr std::size_t longest = 1 << 22;

class Model {
public:
    enum Function { ownVariables, everything, expansion };

    Variables simple, toolInfo;
    std::vector<Function> pushed;

    Answer lookUp(const std::string& name) const {
        for (auto function = pushed.rbegin(); function != pushed.rend(); ++function)
            if (const Answer value = ask(*function, name))
                return value;
        const std::size_t point = name.find('.');
        if (name.starts_with("ti") && point != name.npos)
            if (const Answer value = valueIn(toolInfo, name.substr(point + 1));
                value && !value->empty())
                return value;
        return valueIn(simple, name);
    }

    std::string expanded(const std::string& text) const {
        std::string out;
        unsigned depth = 0;
        std::size_t backslashes = 0, close = 0;
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (text.compare(at, 2, "${") == 0) {
                if (close < at + 2)
                    close = std::min(text.find('}', at + 2), text.size());
                if (close < text.size())
                    append(out, lookUp(text.substr(at + 2, close - at - 2)), depth);
                at = close < text.size() ? close : at + 1;
            } else {
                if (text[at] == '"' && backslashes == (std::size_t(1) << depth) / 2)
                    ++depth;
                else if (text[at] == '"' && backslashes == (std::size_t(1) << depth) / 4)
                    --depth;
                out += text[at];
            }
            backslashes = text[at] == '\\' ? backslashes + 1 : 0;
        }
        return out;
    }

    static int countOf(const std::string& text) {
        int count = 0;
        bool escaped = false;
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (!escaped && text.compare(at, 2, "${") == 0)
                ++count;
            escaped = !escaped && text[at] == '\\';
        }
        return count;
    }

private:
    Answer ask(Function function, const std::string& name) const {
        if (function == ownVariables)
            return valueIn(own, name);
        if (function == everything)
            return "all\\";
        return name == "nested" ? Answer(expanded(nested)) : std::nullopt;
    }

    static void append(std::string& out, const Answer& value, unsigned depth) {
        for (const char c : value.value_or("")) {
            if (c == '\\' && depth > 20)
                throw KazMemoryException();
            if (out.size() > longest)
                throw TooLong();
            out.append(c == '\\' ? std::size_t(1) << depth : 1, c);
        }
    }
};

// ------------------------------------------------------------------- the input

const std::string limit(63, 'n');
const std::array<std::string, 12> names = {"a",         "b",  "ab", "ac",    "nested", "ti.x",
                                           "tiger.a.b", "ti", "",   "\\\"$", limit,    limit + "n"};

const std::array<std::string, 14> pieces = {"${ab}",    "${ac}", "\\", "\"",       "\\\"",
                                            "\\\\\\\"", "${",    "}",  "${a}",     "$",
                                            "${ti.x}",  "${b}",  "{",  "${nested}"};

std::string takeName(fuzz::Input& input) {
    return input.byte() % 8 != 0 ? input.pick(names) : input.cText(8);
}

std::string takeValue(fuzz::Input& input) {
    if (input.byte() % 8 == 0)
        return std::string(input.between<std::size_t>(0, 1100), input.flag() ? '\\' : 'v');
    return input.byte() % 2 == 0 ? input.cText(8) : input.textOf("\\x\"$", 4);
}

std::string takeText(fuzz::Input& input) {
    // The first buffer ends at about this length.
    std::string text(input.byte() % 8 == 0 ? input.between<std::size_t>(1000, 1040) : 0, 'p');
    for (int n = input.between(0, 20); n > 0; --n) {
        const auto piece = input.between<std::size_t>(0, 2 * pieces.size());
        text += piece < pieces.size() ? pieces[piece] : "${" + takeName(input) + "}";
    }
    return text + input.cText(8);
}

// ----------------------------------------------------------------- the questions

/// A text of which too much would come is left out.
void compare(fuzz::Failures& failures, const Model& model, const std::string& text) {
    FUZZ_CHECK(vstring_num_vars(text.c_str()) == Model::countOf(text));
    std::optional<std::string> expected;
    try {
        expected = model.expanded(text);
    } catch (const KazMemoryException&) {
        // The text nests too deeply.
    } catch (const TooLong&) {
        return;
    }
    std::optional<std::string> result;
    try {
        result = failures.ask([&] { return expand(text.c_str()); });
    } catch (const KazMemoryException&) {
        // It does for the library too.
    }
    FUZZ_CHECK(result == expected);
    FUZZ_CHECK(!result || vstring_sub(text.c_str()) == result->c_str());
}

void push(fuzz::Failures& failures, Model& model, fuzz::Input& input) {
    const auto function = input.between<std::size_t>(0, 2);
    failures.step([&] {
        FUZZ_CHECK(function == 0 ? vstring_push_lookup_func(fromOwn, &own)
                                 : vstring_push_lookup_func(function == 1 ? always : byExpansion));
    });
    model.pushed.push_back(static_cast<Model::Function>(function));
}

void step(fuzz::Failures& failures, Model& model, fuzz::Input& input) {
    const std::string name = takeName(input);
    const auto unchanged = [&] {
        const char* const found = vstring_lookup_var(name.c_str());
        FUZZ_CHECK((found != nullptr ? Answer(found) : std::nullopt) == model.lookUp(name));
    };
    const int operation = input.between(0, 8);
    if (operation == 0) {
        push(failures, model, input);
    } else if (operation == 1) {
        vstring_pop_lookup_func();
        if (!model.pushed.empty())
            model.pushed.pop_back();
    } else if (operation == 2) {
        FUZZ_CHECK(vstring_clear_lookup_funcs());
        model.pushed.clear();
    } else if (operation == 3) {
        own[name] = takeValue(input);
    } else if (operation == 4) {
        const std::string value = takeValue(input);
        failures.step([&] { vstring_set_simple_var(name.c_str(), value.c_str()); }, unchanged);
        model.simple[name] = value;
    } else if (operation == 5) {
        // A "~" in front is the business of others.
        const std::string value = "x" + takeValue(input);
        failures.step([&] { FUZZ_CHECK(TI_Vasg(name.c_str(), value.c_str()) == 0); }, unchanged);
        model.toolInfo[name] = value;
    } else if (operation == 6) {
        failures.step(unchanged);
    } else {
        compare(failures, model, takeText(input));
    }
}

} // namespace

void fuzz::harness(Input& input) {
    // No file defines anything; the one fatal error that says so returns.
    static const moxkit::ScopedEnv toolInfo("ToolInfo", "/no/such/file");
    const moxkit::RecordingDirector director;
    KazMasterContext::getInstance()->setSlot(KazMasterContext::toolsSlot, nullptr);
    vstring_clear_lookup_funcs();
    own.clear();

    fuzz::Failures failures(input);
    Model model;
    // Most references lead somewhere from the start on, and to different things.
    model.simple = {{"a", "\\a"}, {"b", "b\"\\\\"}, {"ab", "${a}"}, {"ac", "\\c"}};
    for (const auto& [name, value] : model.simple)
        vstring_set_simple_var(name.c_str(), value.c_str());
    for (int steps = input.between(0, 60); steps > 0; --steps)
        step(failures, model, input);
    // What is left is one text, as long as it may be.
    std::string text = input.rest();
    std::erase(text, '\0');
    compare(failures, model, text);
}
