// Printing lines that nobody may be reading.
#pragma once

#include <ostream>
#include <string_view>

// Prints a text of one or more lines, escaped by harmlessText, and a line feed, and flushes the stream. If that fails,
// the text is lost, and the stream's error is cleared, so that it does not silence later lines.
void logLine(std::ostream& log, std::string_view utf8);
