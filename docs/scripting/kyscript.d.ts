// The declarations of all that scripts see. They are a package, so that it can be copied as one folder: types/kyscript.
/// <reference path="types/kyscript/index.d.ts" />
/// <reference path="types/kyscript/kyrun.d.ts" />
/// <reference path="types/kyscript/testing.d.ts" />
