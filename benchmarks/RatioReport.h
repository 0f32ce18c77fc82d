#pragma once

/// The main function of a benchmark program.
///
/// Benchmarks come in pairs: "SUBJECT" and "SUBJECT/yardstick", measured in one run, their repetitions mixed
/// at random, so that a noisy machine disturbs both alike. The report gives the median time of each and their
/// ratio. \a inGoal in a pair's name, as "SUBJECT<=1.10", is the ratio to be reached.
int runWithRatios(int inArgc, char** inArgv);
