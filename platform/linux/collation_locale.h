// The locale whose rules order titles.
#pragma once

#include <string>

#include "platform/user_defaults.h"

// The locale without the rules of a language.
inline constexpr const char* rootLocale = "root";

// Returns the locale from LC_ALL, LC_COLLATE or LANG, the first of them that is not empty, without encoding and
// modifier: "sv_SE". Returns rootLocale if none is set or the value names no language, as "C" and "POSIX" do.
std::string collationLocale();

// Does the same, but if none is set, as under cron, returns the locale that rememberCollationLocale has stored.
// Otherwise a run without a session would undo the order of the others.
std::string collationLocale(UserDefaults& settings);

// Stores the locale of this session in the settings, if one of the variables is set.
void rememberCollationLocale(UserDefaults& settings);
