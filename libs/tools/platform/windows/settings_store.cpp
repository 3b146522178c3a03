// SPDX-License-Identifier: Apache-2.0
// A section is a key of the registry below the user's own, and a setting is a value of it. The
// registry has no type for real numbers and truth values: these are eight bytes and one byte of
// binary data. Each text of a list has a sign in front, as an empty one would end the list.
// Values that something else has put there are neither read nor touched.
#include "tools/platform/host.h"
#include "tools/platform/host_settings.h"
#include "tools/platform/utf8.h"
#include "tools/platform/windows/errors.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <windows.h>

namespace kaz::host {

namespace {

constexpr std::string_view rootKey = "Software\\Tarvo\\Mox";

std::wstring toWide(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring result(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(),
                        static_cast<int>(result.size()));
    return result;
}

/// Surrogates without their other half become U+FFFD.
/// Other programs write to the registry, too, and it checks nothing.
std::string toUtf8(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    std::string result(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(),
                        static_cast<int>(result.size()), nullptr, nullptr);
    return validUtf8(result);
}

std::string keyOf(const std::string& section) {
    std::string key(rootKey);
    if (!section.empty())
        key.append("\\").append(section);
    std::replace(key.begin(), key.end(), '/', '\\');
    return key;
}

/// 0, or -1 with errno set.
int resultOf(LSTATUS status) {
    return status == ERROR_SUCCESS ? 0 : failWith(errnoOf(static_cast<unsigned long>(status)));
}

bool isMissing(LSTATUS status) {
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
}

constexpr REGSAM allAccess = KEY_READ | KEY_WRITE;

class Key {
public:
    Key() = default;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (key_ != nullptr)
            RegCloseKey(key_);
    }

    LSTATUS open(HKEY parent, const std::wstring& name, REGSAM access) {
        return RegOpenKeyExW(parent, name.c_str(), 0, access, &key_);
    }
    LSTATUS create(const std::wstring& name) {
        return RegCreateKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, nullptr, 0, allAccess, nullptr,
                               &key_, nullptr);
    }
    HKEY get() const { return key_; }

    /// All names are taken before anything is removed: an enumeration that goes on after a removal
    /// leaves entries out.
    std::vector<std::wstring> keys() const {
        std::vector<std::wstring> names;
        std::array<wchar_t, 256> name; // keys have 255 characters at most
        for (DWORD i = 0;; ++i) {
            DWORD length = name.size();
            if (RegEnumKeyExW(key_, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS)
                return names;
            names.emplace_back(name.data(), length);
        }
    }

    std::vector<std::wstring> values() const {
        std::vector<std::wstring> names;
        std::vector<wchar_t> name(16384); // as many characters as a value's name may have
        for (DWORD i = 0;; ++i) {
            auto length = static_cast<DWORD>(name.size());
            if (RegEnumValueW(key_, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS)
                return names;
            names.emplace_back(name.data(), length);
        }
    }

    /// Type and bytes of a value.
    LSTATUS read(const std::wstring& name, DWORD& type, std::vector<BYTE>& bytes) const {
        // The value may grow between two calls, so the size is asked for until one call has it all.
        for (bytes.resize(256);;) {
            auto size = static_cast<DWORD>(bytes.size());
            const LSTATUS status =
                RegQueryValueExW(key_, name.c_str(), nullptr, &type, bytes.data(), &size);
            if (status == ERROR_SUCCESS || size > bytes.size())
                bytes.resize(size);
            if (status != ERROR_MORE_DATA)
                return status;
        }
    }

    bool isEmpty() const {
        DWORD keys = 0, values = 0;
        return RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                                nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
               keys == 0 && values == 0;
    }

private:
    HKEY key_ = nullptr;
};

// --------------------------------------------------------------------- values

std::wstring wideOf(const std::vector<BYTE>& bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

bool isShort(const std::string& text) {
    return text.size() <= mostOfSettingsText;
}

bool readText(const std::vector<BYTE>& bytes, SettingsValue& value) {
    std::wstring text = wideOf(bytes); // which need not be terminated
    text.resize(std::min(text.find(L'\0'), text.size()));
    value = toUtf8(text);
    return isShort(std::get<std::string>(value));
}

/// Each has "=" in front, because one that is empty would end the list.
bool readList(const std::vector<BYTE>& bytes, SettingsValue& value) {
    const std::wstring text = wideOf(bytes);
    SettingsList list;
    for (std::size_t at = 0; at < text.size() && text[at] != L'\0';) {
        const std::size_t end = std::min(text.find(L'\0', at), text.size());
        if (text[at] != L'=' || list.size() == mostOfSettingsList)
            return false;
        list.push_back(toUtf8(std::wstring_view(text).substr(at + 1, end - at - 1)));
        if (!isShort(list.back()))
            return false;
        at = end + 1;
    }
    value = std::move(list);
    return true;
}

template <typename Number>
bool readNumber(const std::vector<BYTE>& bytes, Number& number) {
    if (bytes.size() != sizeof number)
        return false;
    std::memcpy(&number, bytes.data(), sizeof number);
    return true;
}

/// The two forms differ in their size, and nothing else tells them apart.
bool readBinary(const std::vector<BYTE>& bytes, SettingsValue& value) {
    if (bytes.size() == 1 && bytes[0] <= 1) {
        value = bytes[0] == 1;
        return true;
    }
    double real = 0;
    const bool isReal = readNumber(bytes, real) && real - real == 0; // and finite
    value = real;
    return isReal;
}

/// False for a type that is none of ours.
bool readValue(DWORD type, const std::vector<BYTE>& bytes, SettingsValue& value) {
    std::int64_t wide = 0;
    std::uint32_t narrow = 0;
    switch (type) {
    case REG_SZ:
        return readText(bytes, value);
    case REG_MULTI_SZ:
        return readList(bytes, value);
    case REG_BINARY:
        return readBinary(bytes, value);
    case REG_QWORD:
        if (!readNumber(bytes, wide))
            return false;
        value = wide;
        return true;
    // Never written here; administrators set such values with the tools of the system.
    case REG_DWORD:
        if (!readNumber(bytes, narrow))
            return false;
        value = std::int64_t{narrow};
        return true;
    default:
        return false;
    }
}

struct Stored {
    DWORD type;
    std::vector<BYTE> bytes;
};

template <typename Item>
void addBytes(Stored& stored, const Item* items, std::size_t count) {
    const auto* bytes = reinterpret_cast<const BYTE*>(items);
    stored.bytes.insert(stored.bytes.end(), bytes, bytes + count * sizeof(Item));
}

void addText(Stored& stored, const std::wstring& text) {
    addBytes(stored, text.c_str(), text.size() + 1);
}

Stored storedForm(const SettingsValue& value) {
    Stored result{REG_SZ, {}};
    if (const auto* text = std::get_if<std::string>(&value)) {
        addText(result, toWide(*text));
    } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        result.type = REG_QWORD;
        addBytes(result, integer, 1);
    } else if (const auto* real = std::get_if<double>(&value)) {
        result.type = REG_BINARY;
        addBytes(result, real, 1);
    } else if (const auto* flag = std::get_if<bool>(&value)) {
        result.type = REG_BINARY;
        result.bytes.push_back(*flag ? 1 : 0);
    } else {
        result.type = REG_MULTI_SZ;
        for (const std::string& each : std::get<SettingsList>(value))
            addText(result, toWide("=" + each));
        addText(result, {});
    }
    return result;
}

// -------------------------------------------------------------------- changes

/// What is of another type is not there, and so stays.
LSTATUS removeValue(const Key& key, const std::wstring& name) {
    DWORD type = 0;
    std::vector<BYTE> bytes;
    SettingsValue value;
    const LSTATUS status = key.read(name, type, bytes);
    if (status != ERROR_SUCCESS)
        return isMissing(status) ? ERROR_SUCCESS : status;
    return readValue(type, bytes, value) ? RegDeleteValueW(key.get(), name.c_str()) : ERROR_SUCCESS;
}

std::vector<std::wstring> namesOfOurs(std::vector<std::wstring> names) {
    std::erase_if(names, [](const std::wstring& name) { return !isSettingsName(toUtf8(name)); });
    return names;
}

/// Values of ours here and below, and the keys that are empty then.
/// A key that holds anything foreign stays, and so do those above it.
LSTATUS removeTree(const Key& key) {
    for (const std::wstring& name : namesOfOurs(key.values()))
        if (const LSTATUS status = removeValue(key, name); status != ERROR_SUCCESS)
            return status;
    for (const std::wstring& name : namesOfOurs(key.keys())) {
        Key below;
        LSTATUS status = below.open(key.get(), name, allAccess);
        if (status == ERROR_SUCCESS)
            status = removeTree(below);
        if (status == ERROR_SUCCESS && below.isEmpty())
            // The call refuses a key that has keys below, so one that has come since is not lost.
            status = RegDeleteKeyW(key.get(), name.c_str());
        if (status != ERROR_SUCCESS)
            return status;
    }
    return ERROR_SUCCESS;
}

LSTATUS removeEverything(const std::string& name) {
    Key key;
    const LSTATUS status = key.open(HKEY_CURRENT_USER, toWide(name), allAccess);
    if (status != ERROR_SUCCESS)
        return isMissing(status) ? ERROR_SUCCESS : status;
    return removeTree(key);
}

/// A key is made only for a value: a removal leaves no trace of its own.
LSTATUS carryOut(const std::string& keyName, const SettingsChange& change) {
    Key key;
    const std::wstring wideKey = toWide(keyName);
    const std::wstring name = toWide(change.name);
    LSTATUS status =
        change.value ? key.create(wideKey) : key.open(HKEY_CURRENT_USER, wideKey, allAccess);
    if (!change.value && isMissing(status))
        return ERROR_SUCCESS;
    // Removed first, because the registry keeps the spelling of a name that is there.
    if (status == ERROR_SUCCESS && change.removes)
        status = removeValue(key, name);
    if (status != ERROR_SUCCESS || !change.value)
        return status;
    const Stored stored = storedForm(*change.value);
    return RegSetValueExW(key.get(), name.c_str(), 0, stored.type, stored.bytes.data(),
                          static_cast<DWORD>(stored.bytes.size()));
}

/// One process at a time changes settings: a key that was empty a moment ago is removed
/// with the value that another has put there since.
class Turn {
public:
    Turn() : mutex_(CreateMutexW(nullptr, FALSE, L"Local\\Tarvo.Mox.settings")) {
        // One that has died in its turn has given it up.
        if (mutex_ != nullptr)
            WaitForSingleObject(mutex_, INFINITE);
    }
    ~Turn() {
        if (mutex_ == nullptr)
            return;
        ReleaseMutex(mutex_);
        CloseHandle(mutex_);
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    bool isOurs() const { return mutex_ != nullptr; }

private:
    HANDLE mutex_;
};

/// From the section's key up to the suite's own, as far as they are empty.
void removeEmptyKeys(std::string name) {
    while (name.size() >= rootKey.size()) {
        const std::wstring wide = toWide(name);
        {
            Key key;
            const LSTATUS status = key.open(HKEY_CURRENT_USER, wide, KEY_READ);
            if (!isMissing(status) && (status != ERROR_SUCCESS || !key.isEmpty()))
                return;
        }
        RegDeleteKeyW(HKEY_CURRENT_USER, wide.c_str());
        name.resize(name.rfind('\\'));
    }
}

template <typename Item, typename Name>
void putInOrder(std::vector<Item>& items, Name name) {
    std::sort(items.begin(), items.end(), [&](const Item& a, const Item& b) {
        return compareSettingsNames(name(a), name(b)) < 0;
    });
}

} // namespace

std::string SettingsStore::place() const {
    return "HKEY_CURRENT_USER\\" + keyOf(section_);
}

int SettingsStore::load(SettingsSection& result) const {
    result = {};
    Key key;
    const LSTATUS status = key.open(HKEY_CURRENT_USER, toWide(keyOf(section_)), KEY_READ);
    if (status != ERROR_SUCCESS)
        return isMissing(status) ? 0 : resultOf(status);
    DWORD type = 0;
    std::vector<BYTE> bytes;
    for (const std::wstring& name : key.values()) {
        SettingsEntry entry{toUtf8(name), {}};
        if (isSettingsName(entry.name) && key.read(name, type, bytes) == ERROR_SUCCESS &&
            readValue(type, bytes, entry.value))
            result.values.push_back(std::move(entry));
    }
    for (const std::wstring& name : key.keys())
        if (std::string known = toUtf8(name); isSettingsName(known))
            result.sections.push_back(std::move(known));
    putInOrder(result.values,
               [](const SettingsEntry& entry) -> const std::string& { return entry.name; });
    putInOrder(result.sections, [](const std::string& name) -> const std::string& { return name; });
    return 0;
}

/// What was carried out is taken from the changes, also when a later one fails: the caller can try
/// again with the rest. There is no taking back, since each value is written by itself.
int SettingsStore::commit(SettingsChanges& changes) const {
    const std::string key = keyOf(section_);
    const Turn turn;
    if (!turn.isOurs())
        return failWithLastError();
    if (changes.removesAll) {
        if (const LSTATUS status = removeEverything(key); status != ERROR_SUCCESS)
            return resultOf(status);
        changes.removesAll = false;
    }
    auto& left = changes.changes;
    auto next = left.begin();
    LSTATUS status = ERROR_SUCCESS;
    while (next != left.end() && (status = carryOut(key, *next)) == ERROR_SUCCESS)
        ++next;
    left.erase(left.begin(), next);
    // Also after a failure, which may come behind a removal.
    removeEmptyKeys(key);
    return resultOf(status);
}

} // namespace kaz::host
