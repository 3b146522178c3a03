// SPDX-License-Identifier: Apache-2.0
/// @file
/// Signals that ask this process to end. Beside host.h, whose conventions hold.
#pragma once

namespace kaz::host {

/// From here on such a signal is noted and ends nothing: an interrupt from the keyboard,
/// a plain kill and, where there are such, a closed terminal, a closed pipe, a file that
/// would grow too large. One that is ignored stays so: who starts a tool in the background
/// wants it to ignore the keyboard. What was noted before is forgotten.
void noteSignals();

/// As before noteSignals(); what was noted stays.
void restoreSignals();

/// The signal that was noted last, 0 for none.
int notedSignal();

/// Ends the process by the signal that was noted, as if it had not been. Returns when
/// there is none, and after an interrupt from the keyboard, which is a cancellation.
void endByNotedSignal();

} // namespace kaz::host
