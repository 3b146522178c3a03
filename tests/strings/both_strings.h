/// @file
/// The two string classes as types of a typed test.
#pragma once

#include "string_kit.h"

#include <gtest/gtest.h>

using BothStrings = testing::Types<KazString, KazWString>;
