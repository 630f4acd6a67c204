// Where the program is installed.
#pragma once

// Returns true if the program runs from a place that disappears: a mounted disk image, or the temporary path at which
// macOS starts a quarantined copy that its user has not moved since the download (translocation). The settings and the
// login agent would then refer to a path that is gone at the next start.
bool runsFromDiskImage();
