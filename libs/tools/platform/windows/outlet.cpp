// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/windows/outlet.h"

#include "tools/platform/windows/errors.h"

#include <algorithm>
#include <string>

namespace kaz::host {

void TextSink::write(const char* data, std::size_t size) {
    std::string text;
    for (const char* c = data; c != data + size; ++c) {
        // The pair may arrive in two pieces, so a return waits for the next byte, whenever that
        // comes.
        if (heldBack_ && *c != '\n')
            text += '\r';
        heldBack_ = *c == '\r';
        if (!heldBack_)
            text += *c;
    }
    if (!text.empty())
        sink_.write(text.data(), text.size());
}

void TextSink::finish() {
    if (heldBack_)
        sink_.write("\r", 1);
}

bool Outlet::open(OutputSink& sink, bool isText) {
    HANDLE ends[2] = {nullptr, nullptr};
    // Neither end can be inherited; the child gets a copy that can.
    if (CreatePipe(&ends[0], &ends[1], nullptr, 0) == 0)
        return failWithLastError() == 0;
    reading_ = Handle(ends[0]);
    writing_ = Handle(ends[1]);
    sink_ = &sink;
    if (isText)
        text_.emplace(sink);
    return true;
}

bool Outlet::take() {
    DWORD there = 0;
    // A read would wait for a writer. The number of bytes is taken once, or a writer that never
    // rests would keep the others from their turn.
    if (!isOpen() || PeekNamedPipe(reading_.get(), nullptr, 0, nullptr, &there, nullptr) == 0 ||
        there == 0)
        return false;
    while (there > 0) {
        std::array<char, 16 * 1024> buffer;
        DWORD got = 0;
        if (ReadFile(reading_.get(), buffer.data(), std::min<DWORD>(buffer.size(), there), &got,
                     nullptr) == 0 ||
            got == 0)
            break;
        write(buffer.data(), got);
        there -= got;
    }
    return true;
}

void Outlet::finish() {
    take();
    if (text_)
        text_->finish();
}

void Outlet::write(const char* data, std::size_t size) {
    if (text_)
        text_->write(data, size);
    else
        sink_->write(data, size);
}

} // namespace kaz::host
