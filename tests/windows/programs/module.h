#pragma once

/// Runs the scripts that come on standard input, until it ends. What they need of the system must be there.
int runScripts(int inArgc, char** inArgv);
