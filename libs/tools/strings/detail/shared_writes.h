/// @file
/// Whether texts may have changed under those who hold them.
#pragma once

#include <atomic>

namespace kaz::detail {

/// Set, for good, when a text is changed in a block that several hold. Whoever
/// keeps something that was computed from held texts must look at them again then.
inline constinit std::atomic<bool> sharedTextWritten = false;

} // namespace kaz::detail
