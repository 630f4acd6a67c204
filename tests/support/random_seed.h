// The seed and the number of rounds of tests on random input.
#pragma once

// Returns the number in the variable QUILLERY_SEED, or a random one. Prints it, so that a failure can be reproduced.
unsigned randomSeed();

// Returns how many inputs to try: the number in the variable QUILLERY_ROUNDS, or ten thousand.
unsigned randomRounds();
