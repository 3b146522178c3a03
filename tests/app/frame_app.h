// SPDX-License-Identifier: Apache-2.0
/// @file
/// An application object for tests within one process.
#pragma once

#include "tools/app/KazApp.h"

/// Unlike a console application it leaves the standard streams alone when it
/// goes, and has an active context only when it is given one.
class FrameApp : public KazApp {
public:
    bool isGraphical() const override { return true; }

private:
    int superMain(int, char**) override { return 0; }
};
