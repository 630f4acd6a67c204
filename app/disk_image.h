// Where the program is installed.
#pragma once

// True if the program runs from a mounted disk image, which disappears when it is ejected.
bool runsFromDiskImage();
