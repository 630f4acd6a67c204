// A sort from the user's side: what is asked before it, and the report after it.
#pragma once

// Sorts the current user's bookmark file. Makes sure first that the program is installed and that Safari is closed,
// with questions to the user, and reports the outcome through alert(). While `automatic` is true it asks nothing,
// returns silently if Safari is running or the file is in order, and does not care where the program is installed. May
// block in modal dialogs. Never throws: an error becomes the report.
void performSort() noexcept;
