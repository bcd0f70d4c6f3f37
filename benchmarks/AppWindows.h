#pragma once

#include "driver/ProgramUnderTest.h"

namespace quillnest::bench
{

/// Closes every app window and waits until they are gone.
void closeWindows(const driver::ProgramUnderTest &program);

/// Waits until this many windows show pictures.
void waitForWindows(const driver::ProgramUnderTest &program, int count, double seconds);

/// The program without sound on a device that is up, with the sample app Tide installed and no window.
std::unique_ptr<driver::ProgramUnderTest> programWithTide(driver::TestDesktop &desktop);

/// Without sound a benchmark of pictures is one of pictures alone.
void turnSoundOff(const driver::ProgramUnderTest &program);

} // namespace quillnest::bench
