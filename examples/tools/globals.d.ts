// Variables of the engine that the scripts of these tools share, for editors and compilers.

/** The box of the worklist status, while there is one. */
declare var statusBox: Dialog | undefined;
