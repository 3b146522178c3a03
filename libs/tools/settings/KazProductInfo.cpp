// SPDX-License-Identifier: Apache-2.0
// What a file holds and what a setter takes are checked by the same functions, so that
// whatever is written can be read. A text is taken apart into a fresh object, which takes
// the place of the old contents when all of it is known.
#include "tools/settings/KazProductInfo.h"

#include "tools/app/failures/KazFileException.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/formats/encode.h"
#include "tools/platform/host.h"
#include "tools/platform/utf8.h"
#include "tools/services/crc32.h"
#include "tools/settings/detail/product_text.h"
#include "tools/util/detail/site_setting.h"
#include "tools/util/detail/view_of.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace host = kaz::host;
using namespace kaz::detail;

namespace {

int failWith(int number) {
    errno = number;
    return -1;
}

/// The native path of a part; "" when nobody knows where this installation is, which
/// counts for a null root.
KazString below(const char* root, const char* path) {
    KazString place = root != nullptr ? KazString(root) : kazMoxRootDir();
    if (root == nullptr && place.isEmpty())
        return place;
    std::string native(path); // joined plainly: "~" and the like are names here
    std::replace(native.begin(), native.end(), '/', '\\');
    const int length = place.getLength();
    const char last = length > 0 ? place[length - 1] : '\\';
    return last == '\\' || last == '/' ? place + native.c_str() : place + "\\" + native.c_str();
}

/// The whole file. 0, or -1 with errno set: EFBIG for one that is too large.
int readWhole(const char* path, std::string& text) {
    host::FileStatus info;
    if (host::status(path, info) != 0)
        return -1;
    if (info.size > mostOfProductFile)
        return failWith(EFBIG);
    const host::ReadableFile file(path);
    if (!file.isOpen())
        return -1;
    // One byte more than is allowed shows a file that has grown since it was asked for its size.
    text.resize(mostOfProductFile + 1);
    const std::size_t got = file.read(0, text.data(), text.size());
    text.resize(got);
    if (got < info.size)
        return failWith(EIO);
    return got > mostOfProductFile ? failWith(EFBIG) : 0;
}

} // namespace

KazProductInfo::KazProductInfo() = default;

const KazProductInfo& KazProductInfo::getInstance() {
    static KazProductInfo* instance = nullptr; // never destroyed: used to the very end
    if (instance == nullptr) {
        // Kept only when it is complete: after a failed allocation the next call tries again.
        auto made = std::make_unique<KazProductInfo>();
        made->read(getDefaultPath());
        instance = made.release();
    }
    return *instance;
}

KazString KazProductInfo::getDefaultPath(const char* product) {
    const KazString root = kazMoxRootDir();
    // The name becomes a part of a file's name, and must not lead to another directory.
    if (root.isEmpty() || viewOf(product).find_first_of("/\\:") != std::string_view::npos)
        return KazString();
    if (!viewOf(product).empty()) {
        std::string name(viewOf(product));
        for (char& c : name)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
        return kazComposePath(root, ("ProductInfo." + name).c_str());
    }
    const char* configured = siteSetting("product_info");
    return kazComposePath(root, configured != nullptr ? _TI_hm(configured) : "ProductInfo");
}

/// Old contents stay until the new ones are known; a file that cannot be read replaces them too,
/// since nothing true is known of it any longer.
KazProductInfo::State KazProductInfo::read(const char* from) {
    std::string text;
    KazProductInfo next;
    next.path_ = from;
    if (readWhole(next.path_, text) != 0)
        next.state_ = errno == ENOENT || errno == ENOTDIR ? Missing : Unreadable;
    else
        next.parse(text.data(), static_cast<int>(text.size()));
    // Again, as parse() puts a fresh object in the place of this one.
    next.path_ = from;
    *this = std::move(next);
    return state_;
}

KazProductInfo::State KazProductInfo::parse(const char* text, int length) {
    const std::string_view whole = text == nullptr ? std::string_view()
                                   : length < 0
                                       ? std::string_view(text)
                                       : std::string_view(text, static_cast<std::size_t>(length));
    KazProductInfo next;
    if (whole.size() > mostOfProductFile) {
        next.state_ = Unreadable;
    } else {
        ProductText found(whole);
        next.state_ = found.state;
        next.errorLine_ = found.errorLine;
        // Of a malformed text nothing is taken; of one with a wrong checksum everything, for
        // messages that say what was changed.
        if (found.state != Malformed) {
            next.name_ = found.name;
            next.version_ = found.version;
            next.date_ = found.date;
            next.build_ = found.build;
            next.values_ = std::move(found.values);
            next.parts_ = std::move(found.parts);
        }
    }
    *this = std::move(next);
    return state_;
}

KazString KazProductInfo::getProblem() const {
    KazString text;
    const KazString shown = kazPrintable(path_);
    const char* file = shown.getValue();
    switch (state_) {
    case Missing:
        text.format("There is no product information file \"%s\".", file);
        break;
    case Unreadable:
        text.format("The product information file \"%s\" cannot be read.", file);
        break;
    case Malformed:
        text.format("Line %d of the product information file \"%s\" is not valid.", errorLine_,
                    file);
        break;
    case NoChecksum:
        text.format("The product information file \"%s\" has no checksum.", file);
        break;
    case WrongChecksum:
        text.format("The product information file \"%s\" has been changed.", file);
        break;
    case Empty:
    case Good:
        break;
    }
    return text;
}

KazString KazProductInfo::getValue(const char* key) const {
    for (const auto& [known, value] : values_)
        if (viewOf(key) == known.getValue())
            return value;
    return KazString();
}

const KazProductInfo::Part& KazProductInfo::getPart(int index) const {
    static const Part& none = *new Part; // never destroyed: handed out to the very end
    return index >= 0 && index < getPartCount() ? parts_[static_cast<std::size_t>(index)] : none;
}

/// Paths are kept with "/", and asked for in either spelling.
int KazProductInfo::findPart(const char* wanted) const {
    std::string slashed(viewOf(wanted));
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    const auto found = std::find_if(parts_.begin(), parts_.end(), [&](const Part& part) {
        return slashed == part.path.getValue();
    });
    return found != parts_.end() ? static_cast<int>(found - parts_.begin()) : -1;
}

/// What was read is no longer what is here, so neither its checksum nor its errors count.
bool KazProductInfo::changed() {
    state_ = Empty;
    errorLine_ = 0;
    return true;
}

bool KazProductInfo::setName(const char* text) {
    if (!isProductValue(viewOf(text)))
        return false;
    name_ = text;
    return changed();
}

bool KazProductInfo::setVersion(const char* text) {
    if (!isProductValue(viewOf(text)))
        return false;
    version_ = text;
    return changed();
}

bool KazProductInfo::setBuild(int number) {
    constexpr int most = 999'999'999;
    if (number < 0 || number > most)
        return false;
    build_ = number;
    return changed();
}

bool KazProductInfo::setDate(const char* day) {
    if (!viewOf(day).empty() && !isProductDate(viewOf(day)))
        return false;
    date_ = day;
    return changed();
}

bool KazProductInfo::setValue(const char* key, const char* value) {
    const std::string_view text = viewOf(value);
    if (!isFreeProductKey(viewOf(key)) || (!text.empty() && !isProductValue(text)))
        return false;
    const auto place = std::find_if(values_.begin(), values_.end(), [&](const auto& each) {
        return viewOf(key) == each.first.getValue();
    });
    if (place == values_.end() && !text.empty())
        values_.emplace_back(key, value);
    else if (place != values_.end() && text.empty())
        values_.erase(place);
    else if (place != values_.end())
        place->second = value;
    return changed();
}

bool KazProductInfo::addPart(const char* root, const char* partPath, const char* partVersion) {
    Part part;
    part.path = partPath;
    part.version = partVersion;
    const KazString file = below(root, part.path);
    if (!isPartPath(viewOf(partPath)) || !isPartVersion(viewOf(partVersion)))
        return failWith(EINVAL) == 0;
    if (file.isEmpty())
        return failWith(ENOENT) == 0;
    if (kaz_crc32_file(file, &part.checksum, &part.size) != 0)
        return false;
    // The line as a whole has a limit, too; checked last, as it holds the file's size and sum.
    if (!isProductValue(viewOf(partPath)) || !isProductValue(partValue(part)))
        return failWith(EINVAL) == 0;
    const int index = findPart(partPath);
    if (index < 0)
        parts_.push_back(std::move(part));
    else
        parts_[static_cast<std::size_t>(index)] = std::move(part);
    return changed();
}

bool KazProductInfo::removePart(const char* partPath) {
    const int index = findPart(partPath);
    if (index < 0)
        return false;
    parts_.erase(parts_.begin() + index);
    return changed();
}

/// The order is fixed, and so equal contents give equal bytes: files can be compared, and a build
/// that is repeated gives the same.
KazString KazProductInfo::getText() const {
    if (name_.isEmpty() || version_.isEmpty())
        return KazString();
    std::vector<std::string> others, files;
    for (const auto& [key, value] : values_)
        others.push_back(std::string(key.getValue()) + "=" + value.getValue());
    std::vector<const Part*> inOrder;
    for (const Part& part : parts_)
        inOrder.push_back(&part);
    std::stable_sort(inOrder.begin(), inOrder.end(), [](const Part* a, const Part* b) {
        return std::strcmp(a->path, b->path) < 0;
    });
    std::sort(others.begin(), others.end());
    std::string text = "% Product information\nname=" + std::string(name_.getValue()) +
                       "\nversion=" + version_.getValue() + "\n";
    if (build_ != 0)
        text += "build=" + std::to_string(build_) + "\n";
    if (!date_.isEmpty())
        text.append("date=").append(date_.getValue()).append("\n");
    for (const std::string& other : others)
        text += other + "\n";
    for (const Part* part : inOrder)
        text += "part=" + partValue(*part) + "\n";
    KazString last;
    // Of all bytes before its own line, which must be the last one.
    last.format("checksum=%08lx\n",
                static_cast<unsigned long>(kaz_crc32(0, text.data(), text.size())));
    return (text + last.getValue()).c_str();
}

void KazProductInfo::write(const char* to) const {
    const KazString text = getText();
    const std::size_t size = static_cast<std::size_t>(text.getLength());
    // What read() would refuse is not written.
    if (text.isEmpty() || size > mostOfProductFile)
        throw KazFileException(KazFileException::badFormat, to);
    if (host::writeFile(KazString(to), text.getValue(), size) != 0)
        KazFileException::throwErrno(errno, to);
}

/// From cheap to dear: existence, kind and size come from the file system, and only files of the
/// right size are read.
KazProductInfo::PartState KazProductInfo::verifyPart(int index, const char* root) const {
    const Part& part = getPart(index);
    const KazString file = below(root, part.path);
    if (part.path.isEmpty() || file.isEmpty())
        return PartMissing;
    const auto failure = [] {
        return errno == ENOENT || errno == ENOTDIR ? PartMissing : PartUnreadable;
    };
    host::FileStatus info;
    if (host::status(file, info) != 0)
        return failure();
    if (info.kind != host::Kind::file)
        return PartUnreadable;
    if (info.size != part.size)
        return PartWrongSize; // without reading it
    std::uint32_t sum = 0;
    std::uint64_t size = 0;
    if (kaz_crc32_file(file, &sum, &size) != 0)
        return failure();
    // It has changed since it was asked for its size.
    if (size != part.size)
        return PartWrongSize;
    return sum == part.checksum ? PartGood : PartWrongChecksum;
}
