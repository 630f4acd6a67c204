// The command-line self-test: checks the sorting and scheduling rules against built-in fixtures.
#pragma once

// Runs both suites, then prints one line beginning with "PASS: " for each. A check that fails ends the process by a
// signal and prints nothing. Touches no file, no setting and no window.
void runSelfTest();
