// SPDX-License-Identifier: Apache-2.0
/// @file
/// What authors of tools have too, by the short name of the tests here.
#pragma once

#include "testkit/capture.h"

namespace kit {
using namespace moxkit;
}
