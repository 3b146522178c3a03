// SPDX-License-Identifier: Apache-2.0
#include "kit/random.h"
#include "kit/table.h"
#include "place.h"
#include "testkit/director.h"
#include "testkit/process.h"
#include "tools/app/failures/KazResourceException.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <iomanip>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

namespace {

using namespace settings_test;
using List = std::vector<std::string>;

List namesOf(const KazSettings& settings, bool sections = false) {
    KazStringColl names;
    if (sections)
        settings.getSections(names);
    else
        settings.getNames(names);
    List result;
    for (int i = 0; i < names.getSize(); ++i)
        result.push_back(names[i].getValue());
    return result;
}

std::string lowered(std::string text) {
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    return text;
}

class Settings : public testing::Test {
protected:
    static std::string at(const std::string& section) { return Place::section(section); }

    Place place;
};

/// The values of a list as one text, with a character between them that none has.
std::string joined(const List& list) {
    std::string result = "\x02";
    for (const std::string& each : list)
        result += each + "\x02";
    return result;
}

KazStringColl collected(const List& list) {
    KazStringColl result;
    for (const std::string& each : list)
        result.add(each.c_str());
    return result;
}

std::string valueOf(const KazSettings& settings, const char* name) {
    KazStringColl values;
    if (!settings.getList(name, values))
        return settings.getText(name, "none").getValue();
    List list;
    for (int i = 0; i < values.getSize(); ++i)
        list.push_back(values[i].getValue());
    return joined(list);
}

/// Names with their values, and the sections below.
List shown(const KazSettings& settings) {
    List result;
    for (const std::string& name : namesOf(settings))
        result.push_back(name + " " + valueOf(settings, name.c_str()));
    for (const std::string& section : namesOf(settings, true))
        result.push_back("\x02" + section);
    return result;
}

/// What one section holds, by the rules alone.
class Model {
public:
    void set(const std::string& name, const std::string& shown) {
        const auto found = values_.find(lowered(name));
        const std::string spelling = found != values_.end() ? found->second.first : name;
        values_[lowered(name)] = {spelling, shown};
    }
    void remove(const std::string& name) { values_.erase(lowered(name)); }
    void clear() { values_.clear(); }

    List shown() const {
        List result;
        for (const auto& [key, entry] : values_)
            result.push_back(entry.first + " " + entry.second);
        return result;
    }

private:
    std::map<std::string, std::pair<std::string, std::string>> values_;
};

/// Names and texts with everything in them that means something to whoever keeps them.
std::string someText(moxkit::Random& random, const char* others) {
    static const List pieces =
        kit::parts("a,B,b,Z,=,[,],#,|,:,., ,\",%,\xC3\xA4,\xE2\x82\xAC,s,x,\xF0\x9F\x98\x80", ",");
    std::string text;
    for (int n = random.between(1, 6); n > 0; --n)
        text +=
            *others != '\0' && random.oneIn(4)
                ? std::string(1, random.text(1, others)[0])
                : pieces[static_cast<std::size_t>(random.below(static_cast<int>(pieces.size())))];
    std::erase(text, '\0');
    return text.empty() ? "a" : text;
}

/// Changes one thing or none; has everything been removed?
bool change(moxkit::Random& random, KazSettings& settings, Model& model) {
    const std::string spelled = someText(random, "");
    const char* const name = spelled.c_str();
    const std::string text = random.oneIn(5) ? "" : someText(random, "\n\r\t\\/\x01\x1F\x7F");
    const std::function<std::string()> setters[] = {
        [&] {
            settings.setText(name, text.c_str());
            return text;
        },
        [&] {
            const auto number = static_cast<std::int64_t>(random.bits());
            settings.setInteger(name, number);
            return std::to_string(number);
        },
        [&] {
            const double number = std::ldexp(random.below(1000) - 500, -random.below(8));
            settings.setReal(name, number);
            std::ostringstream shortest;
            shortest << std::setprecision(17) << number;
            return shortest.str();
        },
        [&] {
            const bool on = random.oneIn(2);
            settings.setBool(name, on);
            return std::string(on ? "true" : "false");
        },
        [&] {
            List list(static_cast<std::size_t>(random.below(4)));
            for (std::string& each : list)
                each = random.oneIn(3) ? "" : someText(random, "\n|\\\x01");
            settings.setList(name, collected(list));
            return joined(list);
        },
    };
    const auto kind = static_cast<std::size_t>(random.below(8));
    if (kind < std::size(setters)) {
        model.set(spelled, setters[kind]());
    } else if (kind < 7) {
        settings.remove(name);
        model.remove(spelled);
    } else if (random.oneIn(10)) {
        settings.removeAll();
        model.clear();
        return true;
    }
    return false;
}

TEST_F(Settings, WhatIsWrittenIsWhatAModelHolds) {
    kit::Random random;
    std::map<std::string, Model> models;
    const std::string above = "Model/B", below = "Model\\b\\Below";
    KazSettings watcher(at("Model\\b").c_str());
    const auto expected = [&](const std::string& section) {
        List result = models[section].shown();
        if (section == above && !models[below].shown().empty())
            result.push_back("\x02"
                             "Below");
        return result;
    };
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        const std::string section = random.oneIn(2) ? above : below;
        {
            KazSettings settings(at(section).c_str());
            for (int n = random.between(1, 30); n > 0; --n) {
                if (random.oneIn(8))
                    settings.commit();
                if (change(random, settings, models[section]) && section == above)
                    models[below].clear();
            }
            EXPECT_EQ(shown(settings), expected(section)) << "before they are written";
        }
        EXPECT_EQ(shown(KazSettings(at(section).c_str())), expected(section));
        watcher.refresh();
        EXPECT_EQ(shown(watcher), expected(above));
    }
}

TEST_F(Settings, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int processes = 4, commits = 25;
    std::vector<std::thread> threads;
    for (int i = 0; i < processes; ++i)
        threads.emplace_back([&, i] {
            const moxkit::Result result =
                moxkit::run({"settings_probe", at("Together"), std::to_string(i * commits),
                             std::to_string(commits)});
            EXPECT_EQ(result.status, 0) << result.err;
        });
    for (std::thread& thread : threads)
        thread.join();
    const KazSettings settings(at("Together").c_str());
    EXPECT_EQ(namesOf(settings).size(), processes * commits + 1U);
    for (int n = 0; n < processes * commits; ++n)
        EXPECT_EQ(settings.getInteger(("own " + std::to_string(n)).c_str(), -1),
                  n / commits * commits);
}

TEST_F(Settings, ConvertsAsTheTableSays) {
    KazSettings s(at("Convert").c_str());
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    s.setInteger("least", least);
    s.setInteger("zero", 0);
    s.setReal("half", 0.5);
    s.setReal("whole", -3e9);
    s.setReal("tenth", 0.1);
    s.setReal("huge", 9223372036854775808.0); // the first beyond
    s.setBool("yes", true);
    s.setList("list", KazStringColl());
    s.commit();
    const KazSettings r(at("convert").c_str());
    EXPECT_EQ(r.getText("least"), "-9223372036854775808");
    EXPECT_EQ(r.getText("half") + r.getText("tenth"), "0.50.1");
    EXPECT_EQ(r.getText("yes"), "true");
    EXPECT_EQ(r.getText("list", "-") + r.getText("none", "-"), "--");
    EXPECT_EQ(r.getInteger("whole"), -3000000000);
    EXPECT_EQ(r.getInteger("half", 7) + r.getInteger("huge", 7) + r.getInteger("list", 7), 21);
    EXPECT_EQ(r.getInteger("yes"), 1);
    EXPECT_EQ(r.getReal("least"), -9223372036854775808.0);
    EXPECT_EQ(r.getReal("yes", 7) + r.getReal("list", 7), 14);
    EXPECT_TRUE(r.getBool("least") && !r.getBool("zero", true) && r.getBool("half", true));
    KazStringColl list;
    list.add("kept");
    EXPECT_FALSE(r.getList("yes", list) || r.getList("none", list));
    EXPECT_EQ(list.getSize(), 1);
    EXPECT_TRUE(r.getList("LIST", list) && list.getSize() == 0);

    using Words = std::set<std::string>;
    const Words integers = {"12", "+7", "-7", "1", "0"},
                reals = {"0.25", "1e3", "9223372036854775808"}, yes = {"1", "true", "yes", "on"},
                no = {"0", "false", "no", "off"},
                nothing = {"", " 1", "1 ", "+-1", "0x10", "inf", "1e999"};
    for (const Words& words : {integers, reals, yes, no, nothing})
        for (const std::string& text : words) {
            SCOPED_TRACE(text);
            s.setText("text", text.c_str());
            const bool isInteger = integers.contains(text);
            EXPECT_EQ(s.getInteger("text", 99), isInteger ? std::stoll(text) : 99);
            EXPECT_EQ(s.getReal("text", 99),
                      isInteger || reals.contains(text) ? std::stod(text) : 99);
            EXPECT_EQ(s.getBool("text", true), !no.contains(text));
            EXPECT_EQ(s.getBool("text", false), yes.contains(text));
        }
    s.discard();
}

TEST_F(Settings, WhatIsNotAllowedChangesNothing) {
    const auto refused = [](const std::function<void()>& change) {
        try {
            change();
        } catch (KazResourceException& reason) {
            return std::string(reason.getErrorMessage()).find('\x1B') == std::string::npos;
        }
        return false;
    };
    KazSettings s(at("Bounds").c_str());
    KazStringColl many;
    for (int i = 0; i < 4096; ++i)
        many.add("");
    const std::string longest(200, 'n'), longText(65535, 't');
    s.setText(longest.c_str(), longText.c_str());
    s.setList("many", many);
    s.setText("half", "\xE2\x82 \xFF"); // broken off, and nothing at all
    s.setText("null", nullptr);
    s.commit();
    const KazSettings r(at("Bounds").c_str());
    EXPECT_EQ(r.getText(longest.c_str()), longText.c_str());
    EXPECT_TRUE(r.getList("many", many) && many.getSize() == 4096);
    EXPECT_EQ(r.getText("half"), "\xEF\xBF\xBD \xEF\xBF\xBD");
    EXPECT_EQ(r.getText("null", "-"), "");

    many.add("");
    for (const char* name :
         {"", "a\\b", "a/b", "a\nb", "\x1B[2J", "\x7F", "\xC2\x9B", "\xFF", (const char*)nullptr})
        EXPECT_TRUE(refused([&] { s.setText(name, "x"); }) && refused([&] { s.remove(name); }) &&
                    !s.isSet(name));
    EXPECT_TRUE(refused([&] { s.setInteger((longest + "n").c_str(), 1); }));
    EXPECT_TRUE(refused([&] { s.setText("a", (longText + "t").c_str()); }));
    EXPECT_TRUE(refused([&] { s.setReal("a", std::nan("")); }));
    EXPECT_TRUE(refused([&] { s.setReal("a", HUGE_VAL); }));
    EXPECT_TRUE(refused([&] { s.setList("a", many); }));
    EXPECT_FALSE(s.hasChanges());
    std::string deep = "1";
    for (int i = 2; i <= 16; ++i)
        deep += "/" + std::to_string(i);
    EXPECT_EQ(KazSettings(deep.c_str()).getSection(),
              "1\\2\\3\\4\\5\\6\\7\\8\\9\\10\\11\\12\\13\\14\\15\\16");
    for (const std::string& section : {deep + "/17", std::string("/a"), std::string("a\\"),
                                       std::string("a//b"), std::string("\x01")})
        EXPECT_TRUE(refused([&] { KazSettings no(section.c_str()); })) << section;
}

TEST_F(Settings, ChangesShowAtOnceAndAreWrittenOnce) {
    KazSettings a(at("Shared").c_str()), b(at("Shared").c_str());
    a.setInteger("One", 1);
    EXPECT_TRUE(a.isSet("ONE") && !b.isSet("one"));
    a.commit();
    EXPECT_FALSE(a.hasChanges());
    b.setInteger("two", 2);
    b.refresh();
    EXPECT_EQ(namesOf(b), (List{"One", "two"})); // the other's, and its own that is not written
    b.setInteger("ONE", 3);
    b.commit();
    a.refresh();
    EXPECT_EQ(namesOf(a), (List{"One", "two"})); // as it was first written
    EXPECT_EQ(a.getInteger("one"), 3);
    a.remove("One");
    a.setText("oNE", "new");
    EXPECT_EQ(namesOf(a), (List{"oNE", "two"}));
    a.discard();
    EXPECT_EQ(namesOf(a), (List{"One", "two"}));
    {
        KazSettings below(at("Shared\\Deep\\Deeper").c_str());
        below.setBool("b", true);
    } // which commits
    a.refresh();
    EXPECT_EQ(namesOf(a, true), List{"Deep"});
    a.removeAll();
    a.setText("last", "x");
    EXPECT_EQ(namesOf(a), List{"last"});
    a.commit();
    EXPECT_FALSE(KazSettings(at("Shared\\Deep\\Deeper").c_str()).isSet("b"));
    EXPECT_TRUE(namesOf(KazSettings(at("shared").c_str()), true).empty());
    EXPECT_EQ(namesOf(KazSettings(at("").c_str()), true), List{"Shared"});
    a.removeAll();
    a.commit();
    EXPECT_TRUE(namesOf(KazSettings(at("").c_str()), true).empty());
}

} // namespace
