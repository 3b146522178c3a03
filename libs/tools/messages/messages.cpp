// SPDX-License-Identifier: Apache-2.0
// The plain functions are the director's static operations by other names. Only those for a
// single symbol do more: they make a set of it, which the director is given for good.
#include "tools/messages/messages.h"

#include "tools/messages/KazIODirector.h"
#include "tools/util/gu_set.h"

#include <cstdint>
#include <memory>

namespace {

/// Not destroyed by anyone here: a director may keep it for as long as it shows
/// the symbol.
gu_set* singleSymbolSet(short symbol) {
    std::unique_ptr<gu_set, decltype(&gu_set_destroy)> symbols(gu_set_create(0), gu_set_destroy);
    gu_set_add(symbols.get(), reinterpret_cast<void*>(static_cast<std::intptr_t>(symbol)));
    return symbols.release();
}

} // namespace

int tty_start(const char* command) {
    return KazIODirector::ttyStart(command);
}

void tty_end(int ttyId) {
    KazIODirector::ttyEnd(ttyId);
}

void vtty_msg(int ttyId, const char* format, va_list args) {
    KazIODirector::vttyMsg(ttyId, format, args);
}

void vprint_msg(const char* format, va_list args) {
    KazIODirector::vprintMsg(format, args);
}

void vprint_err(const char* format, va_list args) {
    KazIODirector::vprintError(format, args);
}

void vfatal_err(const char* format, va_list args) {
    KazIODirector::vfatalError(format, args);
}

/// Returns where the director in force does.
void kazInternalError(unsigned int code) {
    fatal_err("Internal error #%u", code);
}

void print_sym_msg(_gu_set_struct_* symbols, const char* format, ...) {
    va_list args;
    va_start(args, format);
    KazIODirector::vprintSymMsg(symbols, format, args);
    va_end(args);
}

void print_sym_err(_gu_set_struct_* symbols, const char* format, ...) {
    va_list args;
    va_start(args, format);
    KazIODirector::vprintSymError(symbols, format, args);
    va_end(args);
}

void print_single_sym_msg(short symbol, const char* format, ...) {
    va_list args;
    va_start(args, format);
    KazIODirector::vprintSymMsg(singleSymbolSet(symbol), format, args);
    va_end(args);
}

void print_single_sym_err(short symbol, const char* format, ...) {
    va_list args;
    va_start(args, format);
    KazIODirector::vprintSymError(singleSymbolSet(symbol), format, args);
    va_end(args);
}
