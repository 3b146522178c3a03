// SPDX-License-Identifier: Apache-2.0
// Random bytes are fetched in stock, because a system call takes ten times as long as
// the rest of an identifier. Invariants of a stock: what lies before its position
// has been used and is zero; who has set its flag uses it, in one process. Stocks are
// no thread's own: the C library would have no room for them in the threads of a
// process that loads this library late.
#include "tools/services/KazGuid.h"

#include "tools/app/failures/KazResourceException.h"
#include "tools/files/detail/text.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

namespace host = kaz::host;
using kaz::detail::writtenText;

// The name spaces of RFC 9562, section 6.6: identifiers of names agree with those of others.
constexpr unsigned char dnsBytes[16] = {0x6b, 0xa7, 0xb8, 0x10, 0x9d, 0xad, 0x11, 0xd1,
                                        0x80, 0xb4, 0x00, 0xc0, 0x4f, 0xd4, 0x30, 0xc8};
constexpr unsigned char urlBytes[16] = {0x6b, 0xa7, 0xb8, 0x11, 0x9d, 0xad, 0x11, 0xd1,
                                        0x80, 0xb4, 0x00, 0xc0, 0x4f, 0xd4, 0x30, 0xc8};
constinit const KazGuid KazGuid::dnsSpace(dnsBytes);
constinit const KazGuid KazGuid::urlSpace(urlBytes);

namespace {

struct Stock {
    static constexpr std::size_t size = 4096;
    unsigned char bytes[size];
    std::size_t position;
    unsigned generation;
    bool isFilled;
    std::atomic_flag isTaken; ///< also for good, in a child forked while another thread had it
};
constinit Stock stocks[8]{};

/// A stock that nobody else uses meanwhile; none when all are taken.
class TakenStock {
public:
    // Acquire and release: who takes a stock sees everything that its last user wrote.
    TakenStock()
        : stock_(std::find_if(std::begin(stocks), std::end(stocks), [](Stock& stock) {
              return !stock.isTaken.test_and_set(std::memory_order_acquire);
          })) {}
    ~TakenStock() {
        if (isThere())
            stock_->isTaken.clear(std::memory_order_release);
    }
    TakenStock(const TakenStock&) = delete;
    TakenStock& operator=(const TakenStock&) = delete;

    bool isThere() const { return stock_ != std::end(stocks); }
    Stock& operator*() const { return *stock_; }

private:
    Stock* stock_;
};

void fetch(unsigned char* bytes, std::size_t size) {
    if (host::randomBytes(bytes, size) != 0)
        throw KazResourceException("The system has no random bytes to give.");
}

void fill(Stock& stock, unsigned generation) {
    // First, as a fetch that fails may have overwritten a part.
    stock.isFilled = false;
    fetch(stock.bytes, Stock::size);
    stock.isFilled = true;
    stock.generation = generation;
    stock.position = 0;
}

void takeFrom(Stock& stock, unsigned char (&to)[16]) {
    // A fork copies the stock: the child must not give out the bytes that the parent will.
    const unsigned generation = host::processGeneration();
    if (!stock.isFilled || stock.generation != generation ||
        stock.position + sizeof to > Stock::size)
        fill(stock, generation);
    std::memcpy(to, stock.bytes + stock.position, sizeof to);
    // Who reads this memory later learns nothing about identifiers that were given out.
    std::memset(stock.bytes + stock.position, 0, sizeof to);
    stock.position += sizeof to;
}

void takeRandom(unsigned char (&to)[16]) {
    const TakenStock taken;
    if (taken.isThere())
        takeFrom(*taken, to);
    else
        fetch(to, sizeof to);
}

/// RFC 9562: the version is the upper half of byte 6, the variant the two upper bits of byte 8.
void mark(unsigned char (&bytes)[16], int version) {
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | version << 4);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
}

std::uint64_t milliseconds() {
    using namespace std::chrono;
    const auto now = system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(duration_cast<std::chrono::milliseconds>(now).count());
}

/// Milliseconds and a counter of 12 bits, greater than any before. In a new
/// millisecond the counter begins with @p random; its end carries into the next one.
std::uint64_t nextMoment(unsigned random) {
    static constinit std::atomic<std::uint64_t> last{0};
    const std::uint64_t now = milliseconds() << 12 | (random & 0xFFF);
    std::uint64_t before = last.load(std::memory_order_relaxed);
    std::uint64_t next = 0;
    do
        // A clock that stands still or is put back only counts on from the last moment.
        next = now >> 12 > before >> 12 ? now : before + 1;
    while (!last.compare_exchange_weak(before, next, std::memory_order_relaxed));
    return next;
}

/// The value of a hexadecimal digit; -1 for any other character.
int digit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Is there a hyphen before byte @p i of the plain style?
constexpr bool hasHyphen(int i) {
    return i == 4 || i == 6 || i == 8 || i == 10;
}

bool readDigits(std::string_view text, bool isPlain, unsigned char (&bytes)[16]) {
    const char* c = text.data();
    for (int i = 0; i < 16; ++i) {
        if (isPlain && hasHyphen(i) && *c++ != '-')
            return false;
        const int high = digit(*c++);
        const int low = digit(*c++);
        if (high < 0 || low < 0)
            return false;
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    return true;
}

char* writeDigits(const unsigned char (&bytes)[16], bool isPlain, const char* digits, char* out) {
    for (int i = 0; i < 16; ++i) {
        if (isPlain && hasHyphen(i))
            *out++ = '-';
        *out++ = digits[bytes[i] >> 4];
        *out++ = digits[bytes[i] & 0xF];
    }
    return out;
}

bool startsWithUrn(std::string_view text) {
    constexpr std::string_view prefix = "urn:uuid:";
    return text.size() > prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(), [](char expected, char c) {
               return expected == c || (c >= 'A' && c <= 'Z' && expected == (c | 0x20));
           });
}

constexpr std::size_t plainLength = 36;
constexpr std::size_t compactLength = 32;

} // namespace

KazGuid KazGuid::create() {
    KazGuid guid;
    takeRandom(guid.bytes_);
    mark(guid.bytes_, 4);
    return guid;
}

KazGuid KazGuid::createOrdered() {
    KazGuid guid;
    takeRandom(guid.bytes_);
    const std::uint64_t moment =
        nextMoment(static_cast<unsigned>(guid.bytes_[0] | guid.bytes_[1] << 8));
    // 48 bits of milliseconds, the version, and 12 bits of the counter (RFC 9562, section 5.7).
    for (int i = 0; i < 6; ++i)
        guid.bytes_[i] = static_cast<unsigned char>(moment >> (52 - 8 * i));
    guid.bytes_[6] = static_cast<unsigned char>(moment >> 8 & 0xF);
    guid.bytes_[7] = static_cast<unsigned char>(moment);
    mark(guid.bytes_, 7);
    return guid;
}

KazGuid KazGuid::fromName(const KazGuid& space, const char* name) {
    const char* text = kaz::detail::orEmpty(name);
    host::Sha1Digest digest;
    if (host::sha1(space.bytes_, sizeof space.bytes_, text, std::strlen(text), digest) != 0)
        throw KazResourceException("The system's digest cannot be had.");
    KazGuid guid;
    // Of the 20 bytes of SHA-1 the first 16 (RFC 9562, section 5.5).
    std::memcpy(guid.bytes_, digest, sizeof guid.bytes_);
    mark(guid.bytes_, 5);
    return guid;
}

bool KazGuid::parse(const char* text, KazGuid& guid) {
    std::string_view left = kaz::detail::orEmpty(text);
    if (startsWithUrn(left)) {
        left.remove_prefix(9);
        if (left.size() != plainLength)
            return false;
    } else if (left.size() == plainLength + 2 && left.front() == '{' && left.back() == '}') {
        left = left.substr(1, plainLength);
    }
    // The lengths decide the style, so that digits are read without a look for the end.
    if (left.size() != plainLength && left.size() != compactLength)
        return false;
    unsigned char read[16];
    if (!readDigits(left, left.size() == plainLength, read))
        return false;
    guid = KazGuid(read);
    return true;
}

KazGuid KazGuid::fromBytes(const unsigned char (&bytes)[16]) {
    return KazGuid(bytes);
}

KazString KazGuid::getText(Style style) const {
    const bool isBraced = style == Braced;
    const std::size_t length = style == Compact ? compactLength : plainLength + (isBraced ? 2 : 0);
    return writtenText(length, [&](char* out) {
        if (isBraced)
            *out++ = '{';
        const char* digits = isBraced ? "0123456789ABCDEF" : "0123456789abcdef";
        out = writeDigits(bytes_, style != Compact, digits, out);
        if (isBraced)
            *out = '}';
    });
}

bool KazGuid::isNil() const {
    return std::all_of(bytes_, bytes_ + 16, [](unsigned char byte) { return byte == 0; });
}

int KazGuid::getVersion() const {
    const int version = bytes_[6] >> 4;
    return (bytes_[8] & 0xC0) == 0x80 && version <= 8 ? version : 0;
}

int KazGuid::compare(const KazGuid& other) const {
    const int order = std::memcmp(bytes_, other.bytes_, sizeof bytes_);
    return (order > 0 ? 1 : 0) - (order < 0 ? 1 : 0);
}

unsigned KazGuid::hash() const {
    // FNV-1a: also the bytes of names and of moments, which are not random, spread.
    unsigned result = 2166136261U;
    for (const unsigned char byte : bytes_)
        result = (result ^ byte) * 16777619U;
    return result;
}

KazString kazCreateGuid() {
    return KazGuid::create().getText();
}
