// The seed of a test on random input.
#pragma once

// The number in the variable QUILLERY_SEED, else another one each time. Printed, so that what failed can be had again.
unsigned randomSeed();
