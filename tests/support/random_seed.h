// What a test on random input begins with.
#pragma once

// The number in the variable QUILLERY_SEED, else another one each time. Printed, so that what failed can be had again.
unsigned randomSeed();

// How many inputs to try: the number in the variable QUILLERY_ROUNDS, else ten thousand.
unsigned randomRounds();
