// The standard streams, however the program was started.
#pragma once

// Prepares the standard streams at the start of a program. Writing to a pipe that nobody reads becomes an error, as on
// every other stream, instead of a signal that ends the process. A stream that is closed becomes one on which every
// write fails; otherwise the next file that the program opens would take its number, and what is printed would go into
// that file.
void prepareStandardStreams();
