#include "app/disk_image.h"

#include "platform/platform.h"

bool runsFromDiskImage() { return platform().bundle.path().starts_with("/Volumes/"); }
