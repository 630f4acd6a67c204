// A sort from the user's side: what is asked before it, and the report after it.
#pragma once

#include <functional>

// Sorts the current user's bookmark file. Makes sure first that the program is installed and that Safari is closed,
// with questions to the user, and reports the outcome through alert(). While `automatic` is true it asks nothing,
// returns silently if Safari is running or the file is in order, and does not care where the program is installed. May
// block in modal dialogs. Never throws: an error becomes the report. Calls `showSorting`, if there is one, with true
// before it reads the file and with false once it is sorted or left as it was, before the report; `showSorting` must
// not throw.
void performSort(const std::function<void(bool isSorting)>& showSorting = nullptr) noexcept;
