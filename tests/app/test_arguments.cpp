#include "tools/app/arguments.h"

#include "frame_app.h"
#include "kit/alloc_failure.h"
#include "kit/capture.h"
#include "kit/random.h"
#include "option_rows.h"
#include "tools/app/KazMasterContext.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/KazToolsContext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace {

/// argv as main gets it; argv[0] is "tool".
class Words {
public:
    Words(std::vector<std::string> words) : words_(std::move(words)) {
        words_.insert(words_.begin(), "tool");
        for (std::string& word : words_)
            pointers_.push_back(word.data());
        pointers_.push_back(nullptr);
    }
    int argc() const { return static_cast<int>(words_.size()); }
    char** argv() { return pointers_.data(); }

private:
    std::vector<std::string> words_;
    std::vector<char*> pointers_;
};

const std::vector<arg_type_enum>& allTypes() {
    static const std::vector<arg_type_enum> types = [] {
        std::vector<arg_type_enum> result;
        for (const OptionRow& row : readOptionRows())
            result.push_back(static_cast<arg_type_enum>(row.type));
        result.push_back(arg_end);
        return result;
    }();
    return types;
}

bool parseAll(KazParsedArgs& args, std::vector<std::string> line) {
    Words words(std::move(line));
    return args.parse(words.argc(), words.argv(), nullptr, allTypes().data(), 0);
}

std::vector<std::string> valuesOf(const KazParsedArgs& args, int type) {
    std::vector<std::string> result;
    while (const char* text = args.getArgText(static_cast<arg_type_enum>(type),
                                              static_cast<int>(result.size()), nullptr))
        result.emplace_back(text);
    return result;
}

std::vector<std::string> untaggedOf(const KazParsedArgs& args) {
    std::vector<std::string> result;
    while (const char* text = args.getUntagged(static_cast<int>(result.size())))
        result.emplace_back(text);
    return result;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(OptionTable, HasTheKnownRowsInTheirOrder) {
    const std::vector<OptionRow> rows = readOptionRows();
    ASSERT_EQ(rows.size(), 71u);
    const KazArgDescription* actual = KazArgDescription::table();
    std::set<int> types;
    for (const OptionRow& row : rows) {
        SCOPED_TRACE(row.text);
        ASSERT_NE(actual->type, arg_end);
        EXPECT_EQ(actual->text, row.text);
        EXPECT_EQ(actual->type, row.type);
        EXPECT_EQ(actual->minLength, static_cast<int>(row.shortest));
        EXPECT_EQ(actual->valueCount, row.values);
        EXPECT_EQ(actual->repeatLimit, row.repeats);
        EXPECT_EQ(actual->isSwitch, row.isSwitch);
        EXPECT_EQ(actual->isGlobal, row.isGlobal);
        EXPECT_EQ(actual->defaultText ? actual->defaultText : "-", row.defaultText);
        EXPECT_EQ(KazArgDescription::find(actual->type), actual);
        EXPECT_EQ(kaz_arg_is_repeating(actual->type), row.repeats > 1);
        types.insert(row.type);
        ++actual;
    }
    EXPECT_EQ(actual->type, arg_end);
    EXPECT_EQ(types.size(), 71u);
    EXPECT_EQ(types.count(46), 0u);
    EXPECT_EQ(*types.rbegin(), 71);
    EXPECT_FALSE(kaz_arg_is_repeating(static_cast<arg_type_enum>(46)));
    EXPECT_EQ(KazArgDescription::find(arg_end), nullptr);
}

/// Every prefix of every option, with digits and other characters behind it, in
/// either case of its first letter: found row and stored value against the rows
/// above.
TEST(OptionTable, EveryPrefixMeansWhatTheFirstMatchingRowSays) {
    const std::vector<OptionRow> rows = readOptionRows();
    std::set<std::string> words;
    for (const OptionRow& row : rows)
        for (std::size_t n = 1; n <= row.text.size(); ++n)
            for (const char* tail : {"", "0", "1", "2", "00", "01", "x"}) {
                std::string word = row.text.substr(0, n) + tail;
                words.insert(word);
                if (word.size() > 1)
                    word[1] = static_cast<char>(word[1] ^ ' ');
                words.insert(word);
            }
    EXPECT_GT(words.size(), 4000u);
    for (const std::string& word : words) {
        SCOPED_TRACE(word);
        const OptionRow* expected = selectRow(rows, word);
        const KazArgDescription* actual = KazArgDescription::match(word.c_str());
        ASSERT_EQ(actual != nullptr, expected != nullptr);
        KazParsedArgs args;
        ASSERT_EQ(parseAll(args, {word, "a", "b"}), expected != nullptr);
        if (expected == nullptr)
            continue;
        EXPECT_EQ(actual->text, expected->text);
        Texts stored{"a", "b"};
        stored.resize(static_cast<std::size_t>(expected->values));
        if (expected->isSwitch)
            stored = {word == expected->text + "0"   ? "0"
                      : word == expected->text + "1" ? "1"
                                                     : expected->defaultText};
        else if (expected->values == 0)
            stored = {"1"};
        EXPECT_EQ(valuesOf(args, expected->type), stored);
    }
}

TEST(ParsedArgs, StoresSwitchesValuesAndPlainArguments) {
    KazParsedArgs args;
    ASSERT_TRUE(parseAll(args, {"-batch0", "one", "-connect", "-projdir", "-system", "-x", "a", "b",
                                "", "-x", "c", "d", "-output", "", "-replace"}));
    EXPECT_STREQ(args.getArgText(arg_batch, 0, nullptr), "0");
    EXPECT_STREQ(args.getArgText(arg_connect, 0, nullptr), "first");
    EXPECT_STREQ(args.getArgText(arg_projdir, 0, nullptr), "-system");
    EXPECT_STREQ(args.getArgText(arg_replace, 0, nullptr), "1");
    EXPECT_STREQ(args.getArgText(arg_output, 0, nullptr), "");
    EXPECT_EQ(valuesOf(args, arg_x), (Texts{"a", "b", "c", "d"}));
    EXPECT_EQ(untaggedOf(args), (Texts{"one", ""}));
    EXPECT_EQ(args.getUntagged(-1), nullptr);

    const char* fallback = "fallback";
    EXPECT_STREQ(args.getRepeatingText(arg_x, 1, 0, nullptr), "c");
    EXPECT_STREQ(args.getRepeatingText(arg_x, 1, 2, &fallback), "fallback");
    EXPECT_EQ(args.getRepeatingText(arg_x, 2, 0, nullptr), nullptr);
    EXPECT_EQ(args.getRepeatingText(arg_x, 0x7fffffff, 1, nullptr), nullptr);
    EXPECT_STREQ(args.getArgText(arg_x, 4, &fallback), "fallback");
    EXPECT_STREQ(args.getArgText(arg_x, -1, &fallback), "fallback");
    EXPECT_EQ(args.getArgText(arg_system, 0, nullptr), nullptr);
    EXPECT_EQ(args.getArgText(static_cast<arg_type_enum>(72), 0, nullptr), nullptr);
    EXPECT_EQ(args.getArgText(arg_end, 0, nullptr), nullptr);
}

TEST(ParsedArgs, ReportsRepetitionsOnlyByTheirTwoMessages) {
    kit::Capture capture;
    KazParsedArgs args;
    EXPECT_TRUE(parseAll(args, {"-projdir", "a", "-p", "b", "-batch", "-batch0"}));
    EXPECT_EQ(valuesOf(args, arg_projdir), Texts{"a"});
    EXPECT_EQ(valuesOf(args, arg_batch), Texts{"1"});
    EXPECT_EQ(untaggedOf(args), Texts{"b"});
    const std::string repeated = "-projdir repeated on command line, using first value\n"
                                 "-batch repeated on command line, using first value\n";
    EXPECT_EQ(capture.err(), repeated);

    Texts line;
    for (int i = 0; i < 100; ++i)
        line.insert(line.end(), {"-x", "k", "v"});
    KazParsedArgs full;
    EXPECT_TRUE(parseAll(full, line));
    EXPECT_FALSE(parseAll(full, {"-x", "k", "v"}));
    EXPECT_EQ(valuesOf(full, arg_x).size(), 200u);
    EXPECT_EQ(capture.err(),
              repeated + "-x argument repeated more than 100 times on command line\n");
    EXPECT_EQ(capture.out(), "");
}

TEST(ParsedArgs, CountsWhatEarlierCallsHaveRead) {
    const arg_type_enum required[] = {arg_system, arg_end};
    kit::Capture capture;
    KazParsedArgs args;
    Words words({"-system", "s", "one"});
    EXPECT_FALSE(args.parse(words.argc(), words.argv(), required, nullptr, 2));
    EXPECT_TRUE(args.parse(words.argc(), words.argv(), required, nullptr, 2));
    EXPECT_EQ(untaggedOf(args), (Texts{"one", "s", "one"}));
    EXPECT_EQ(capture.err(), "-system repeated on command line, using first value\n");
    EXPECT_TRUE(KazParsedArgs().parse(0, nullptr, nullptr, nullptr, 0));
    EXPECT_FALSE(KazParsedArgs().parse(0, nullptr, required, nullptr, 0));
}

TEST(ParsedArgs, DecodesCommands) {
    const std::map<std::string, std::string> commands = {
        {"0x414243", "ABC"},    {"0x41G2", ""},       {"0x414", "0x414"}, {"0x", "0x"},
        {"0xc3bF", "\xc3\xbf"}, {"0X4142", "0X4142"}, {"print", "print"}, {"", ""}};
    for (const auto& [given, stored] : commands) {
        KazParsedArgs args;
        ASSERT_TRUE(parseAll(args, {"-Command", given, "-Incldir", given}));
        EXPECT_EQ(valuesOf(args, arg_Command), Texts{stored}) << given;
        EXPECT_EQ(valuesOf(args, arg_Incldir), Texts{given});
    }
    EXPECT_STREQ(kaz_arg_text_encode(""), "0x");
    EXPECT_STREQ(kaz_arg_text_encode("\xff z"), "0xFF207A");
    kit::Random random(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int i = 0; i < 200; ++i) {
        std::string text(1, 'x');
        for (int n = random.below(30); n > 0; --n)
            text += static_cast<char>(random.between(1, 255));
        KazParsedArgs args;
        ASSERT_TRUE(parseAll(args, {"-Command", kaz_arg_text_encode(text.c_str()).getValue()}));
        EXPECT_EQ(valuesOf(args, arg_Command), Texts{text});
    }
}

namespace {

/// The parser as a page of prose: what a set holds after some command lines.
struct ParserModel {
    std::vector<OptionRow> rows = readOptionRows();
    std::map<int, Texts> values;
    Texts untagged;
    int messages = 0;

    bool parse(const Texts& line, const std::set<int>& required, const std::set<int>& optional) {
        std::set<int> seen;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i].empty() || line[i][0] != '-') {
                untagged.push_back(line[i]);
                continue;
            }
            const OptionRow* row = selectRow(rows, line[i]);
            if (!row || (!required.count(row->type) && !optional.count(row->type)))
                return false;
            seen.insert(row->type);
            if (values.count(row->type) && row->repeats <= 1) {
                ++messages;
                continue;
            }
            if (!store(*row, line, i))
                return false;
        }
        return std::includes(seen.begin(), seen.end(), required.begin(), required.end());
    }

    bool store(const OptionRow& row, const Texts& line, std::size_t& i) {
        if (row.isSwitch) {
            const bool digit = line[i].back() == '0' || line[i].back() == '1';
            values[row.type].push_back(digit ? line[i].substr(line[i].size() - 1)
                                             : row.defaultText);
            return true;
        }
        if (i + static_cast<std::size_t>(row.values) >= line.size())
            return false;
        if (row.values == 0) {
            values[row.type].push_back("1");
            return true;
        }
        const bool repeating = row.repeats > 1;
        if (repeating && values.count(row.type) &&
            values[row.type].size() >= static_cast<std::size_t>(row.values * row.repeats)) {
            ++messages;
            return false;
        }
        for (int n = 0; n < row.values; ++n)
            values[row.type].push_back(line[++i]);
        return true;
    }
};

std::vector<arg_type_enum> asList(const std::set<int>& types) {
    std::vector<arg_type_enum> list;
    for (int type : types)
        list.push_back(static_cast<arg_type_enum>(type));
    list.push_back(arg_end);
    return list;
}

std::string randomWord(kit::Random& random, const std::vector<OptionRow>& rows) {
    if (random.oneIn(4))
        return random.text(3, "ab01-");
    const OptionRow& row =
        rows[static_cast<std::size_t>(random.below(static_cast<int>(rows.size())))];
    if (random.oneIn(4))
        return row.text.substr(0, row.shortest);
    return row.text + (row.isSwitch && random.oneIn(2) ? random.text(1, "01") : "");
}

} // namespace

TEST(ParsedArgs, AgreesWithTheModelOnRandomLines) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    const std::vector<OptionRow> rows = readOptionRows();
    int accepted = 0;
    for (int round = 0; round < 400; ++round) {
        ParserModel model;
        KazParsedArgs args;
        kit::Capture capture;
        for (int call = random.between(1, 3); call > 0; --call) {
            Texts line;
            for (int n = random.below(12); n > 0; --n)
                line.push_back(randomWord(random, rows));
            std::set<int> required, optional;
            if (random.oneIn(8))
                required.insert(rows[static_cast<std::size_t>(random.below(71))].type);
            for (const OptionRow& row : rows)
                if (row.type != arg_Command && !random.oneIn(30))
                    optional.insert(row.type);
            Words words(line);
            const bool result = args.parse(words.argc(), words.argv(), asList(required).data(),
                                           asList(optional).data(), 0);
            ASSERT_EQ(result, model.parse(line, required, optional))
                << ::testing::PrintToString(line);
            accepted += result;
        }
        for (int type = 0; type < 72; ++type)
            ASSERT_EQ(valuesOf(args, type), model.values[type]) << type;
        ASSERT_EQ(untaggedOf(args), model.untagged);
        const std::string messages = capture.err();
        ASSERT_EQ(std::count(messages.begin(), messages.end(), '\n'), model.messages);
    }
    EXPECT_GT(accepted, 100);
}

TEST(ParsedArgs, KeepsWhatItHasWhenMemoryRunsOut) {
    Words words({"-x", "key", "value", "-batch", "plain", "-Command", "0x4142"});
    std::optional<KazParsedArgs> args;
    kit::Capture capture; // The parses after a failure report repetitions.
    const long failed = kit::sweepAllocations(
        [&] {
            args.emplace();
            args->parse(words.argc(), words.argv(), nullptr, allTypes().data(), 0);
        },
        [&] {
            if (!args) // it could not even be made
                return;
            const Texts whole{"key", "value"};
            const Texts kept = valuesOf(*args, arg_x);
            EXPECT_EQ(kept, Texts(whole.begin(), whole.begin() + static_cast<long>(kept.size())));
            EXPECT_EQ(valuesOf(*args, arg_Command), Texts{});
            args->parse(words.argc(), words.argv(), nullptr, allTypes().data(), 0);
            EXPECT_EQ(valuesOf(*args, arg_batch), Texts{"1"});
        });
    EXPECT_GE(failed, 5) << "one for each value at least";
    EXPECT_EQ(valuesOf(*args, arg_Command), Texts{"AB"});
}

TEST(Arguments, QueriesGoToTheToolsOwnSetOnceItExists) {
    FrameApp app;
    Words shared({"-projdir", "shared", "-trace", "t1", "-verbose", "plain"});
    ASSERT_TRUE(kaz_arg_parse(shared.argc(), shared.argv(), nullptr, allTypes().data(), 1, false));
    EXPECT_STREQ(kaz_arg_text(arg_projdir, 0, nullptr), "shared");
    EXPECT_STREQ(kaz_arg_get_untagged(0), "plain");

    Words own({"-trace", "t2", "-x", "a", "b", "mine"});
    EXPECT_FALSE(kaz_arg_parse(own.argc(), own.argv(), nullptr, allTypes().data(), 0, true))
        << "there is no context to hold a set";
    KazMasterContext context;
    EXPECT_STREQ(kaz_arg_text(arg_projdir, 0, nullptr), "shared") << "no own set yet";
    ASSERT_TRUE(kaz_arg_parse(own.argc(), own.argv(), nullptr, allTypes().data(), 0, true));
    EXPECT_EQ(kaz_arg_text(arg_projdir, 0, nullptr), nullptr);
    EXPECT_STREQ(kaz_arg_text(arg_verbose, 0, nullptr), "1");
    EXPECT_STREQ(kaz_arg_text(arg_trace, 0, nullptr), "t1");
    EXPECT_STREQ(kaz_arg_text(arg_trace, 1, nullptr), "t2");
    EXPECT_STREQ(kaz_arg_repeating_text(arg_x, 0, 1, nullptr), "b");
    EXPECT_STREQ(kaz_arg_get_untagged(0), "mine");

    app.setActiveContext(nullptr);
    EXPECT_STREQ(kaz_arg_text(arg_projdir, 0, nullptr), "shared");
    app.setActiveContext(&context);
}

TEST(Arguments, WithoutAnApplicationNothingIsKnown) {
    { FrameApp passing; }
    ASSERT_EQ(KazApp::getInstance(), nullptr);
    Words words({"x"});
    EXPECT_FALSE(kaz_arg_parse(words.argc(), words.argv(), nullptr, nullptr, 0, false));
    const char* fallback = "f";
    EXPECT_STREQ(kaz_arg_text(arg_x, 0, &fallback), "f");
    EXPECT_STREQ(kaz_arg_repeating_text(arg_x, 0, 0, &fallback), "f");
    EXPECT_EQ(kaz_arg_get_untagged(0), nullptr);
}

TEST(Arguments, TellsNumbersFromText) {
    for (const char* text : {"0", "42", "007"})
        EXPECT_TRUE(text_is_integer(text) && text_is_float(text)) << text;
    for (const char* text : {"1.5", ".", "1..2", ""}) {
        EXPECT_FALSE(text_is_integer(text)) << text;
        EXPECT_TRUE(text_is_float(text)) << text;
    }
    for (const char* text : {"-1", "+1", "1e5", " 1", "x"})
        EXPECT_FALSE(text_is_integer(text) || text_is_float(text)) << text;
}

TEST(Arguments, ShiftsNullsOutOfArgv) {
    char a[] = "a", b[] = "b";
    char* argv[] = {nullptr, a, nullptr, nullptr, b, nullptr, a};
    int argc = 6;
    arg_shift_argv(&argc, argv);
    EXPECT_EQ(argc, 2);
    EXPECT_EQ((std::vector<char*>(argv, argv + 3)), (std::vector<char*>{a, b, nullptr}));
    char* rest[] = {a, b};
    argc = 0;
    arg_shift_argv(&argc, rest);
    EXPECT_EQ(rest[0], nullptr);
    EXPECT_EQ(rest[1], b);
    char** same = nullptr;
    argv_to_glob(7, argv, &argc, &same);
    EXPECT_EQ(argc, 7);
    EXPECT_EQ(same, argv);
    argv_to_glob(1, nullptr, nullptr, nullptr);
}

TEST(Arguments, TakesTheEditorOutOfArgv) {
    struct Case {
        const char* argv0;
        Texts line;
        const char* editor;
        const char* renamed;
        Texts left;
    };
    const std::string far = std::string(510, 'd') + "/tool";
    const std::vector<Case> cases = {
        {"tool", {"-editor", "gr", "x"}, "gr", "gr", {"x"}},
        {"dir\\tool", {"x", "-Ed", "gr"}, "gr", "dir\\gr", {"x"}},
        {"a/b/tool", {"-EDITOR", "gr"}, "gr", "a\\b\\gr", {}},
        {"tool", {"-editorial", "gr"}, "gr", "gr", {}},
        {far.c_str(), {"-e", "gr"}, "gr", far.c_str(), {}},
        {"tool", {"-", "gr"}, nullptr, "tool", {"-", "gr"}},
        {"tool", {"x", "-editor"}, nullptr, "tool", {"x", "-editor"}},
        {"tool", {"-editor"}, nullptr, "tool", {"-editor"}},
        {"tool", {"-edx", "gr"}, nullptr, "tool", {"-edx", "gr"}},
    };
    for (const Case& c : cases)
        for (int rename : {0, 1}) {
            SCOPED_TRACE(::testing::PrintToString(c.line));
            Words words(c.line);
            std::string argv0 = c.argv0;
            words.argv()[0] = argv0.data();
            int argc = words.argc();
            char* editor = nullptr;
            EXPECT_EQ(get_editor_from_argv(&argc, words.argv(), &editor, rename),
                      c.editor != nullptr);
            EXPECT_STREQ(editor, c.editor);
            EXPECT_STREQ(words.argv()[0], rename ? c.renamed : c.argv0);
            EXPECT_EQ(Texts(words.argv() + 1, words.argv() + argc), c.left);
            EXPECT_EQ(words.argv()[argc], nullptr);
            if (words.argv()[0] != argv0.data())
                std::free(words.argv()[0]);
        }
}
