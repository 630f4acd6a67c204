// Checks the order that a collation gives to texts.
#pragma once

#include <string>
#include <vector>

#include "platform/collation.h"

// Expects that each of these texts comes before all that follow it.
void expectIncreasing(const Collation& collation, const std::vector<std::u16string>& texts);
