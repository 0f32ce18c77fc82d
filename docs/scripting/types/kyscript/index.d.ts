// What scripts of the workstation see. docs/scripting/editor.md tells how an editor picks it up.
//
// A comment says what a name does, in which units, what it gives when there is nothing to give ("Neutral"), and what an
// error does. Errors of arguments are the same everywhere: too few of them are an Error, and a value that cannot become
// the declared type is a TypeError of the script, before anything has happened. Missing things are never errors.

/// <reference lib="es2017" />
/// <reference path="language.d.ts" />
/// <reference path="core.d.ts" />
/// <reference path="application.d.ts" />
/// <reference path="studies.d.ts" />
/// <reference path="viewers.d.ts" />
/// <reference path="dialogs.d.ts" />
/// <reference path="timers.d.ts" />
/// <reference path="files.d.ts" />
/// <reference path="web.d.ts" />
/// <reference path="browser.d.ts" />
/// <reference path="backend.d.ts" />
/// <reference path="report.d.ts" />
