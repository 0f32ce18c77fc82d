// Prints, as JSON, what a declaration file of TypeScript declares: declared.js FILE.d.ts
//
//   globals   name -> { file, kinds, signatures, constructors }: what is declared as a value, outside of the library
//   types     name -> { file, isHost, members }: interfaces; isHost tells those of objects of the application
//   members   name -> { kind, kinds, isReadonly, signatures }, inherited ones too; kind is property, method or signal
//   offers    name of a type -> the texts among its members, which an editor offers
//   builtins  names that the library of the language declares, such as "Array" and "Array.prototype.includes"
//   examples  { file, line, name, code }
//   gaps      what has no comment, or a class or function without an example
//   errors    of the compiler
//
// A signature is { arguments: [{ name, kinds, isOptional }], result: kinds }. Kinds are the members of a union without
// their literals: a "left" | "right" | null has the kinds null and string.
"use strict";

const path = require("path");
const ts = require("typescript");

const HOST = "HostObject";
const SIGNAL = "Signal";

const root = path.resolve(process.argv[2]);
const folder = path.dirname(root);
const options = { lib: ["lib.es2017.d.ts"], target: ts.ScriptTarget.ES2017, types: [], strict: true, noEmit: true };
const program = ts.createProgram([root], options);
const checker = program.getTypeChecker();
const ownFiles = program.getSourceFiles().filter((file) => !program.isSourceFileDefaultLibrary(file));
const fileOf = (node) => path.relative(folder, node.getSourceFile().fileName);

function nameOf(type) {
    const name = type.symbol && type.symbol.name;
    return name && !name.startsWith("__") ? name : undefined;
}

const PRIMITIVES = [
    [ts.TypeFlags.Any | ts.TypeFlags.Unknown, "any"],
    [ts.TypeFlags.StringLike, "string"],
    [ts.TypeFlags.NumberLike, "number"],
    [ts.TypeFlags.BooleanLike, "boolean"],
    [ts.TypeFlags.Void, "void"],
    [ts.TypeFlags.Undefined, "undefined"],
    [ts.TypeFlags.Null, "null"]
];

function primitive(type) {
    const found = PRIMITIVES.find(([flags]) => type.flags & flags);
    return found && found[1];
}

function kinds(type) {
    if (type.isUnion())
        return [...new Set(type.types.flatMap(kinds))].sort();
    if (primitive(type))
        return [primitive(type)];
    if (type.isIntersection())
        return kinds(type.types.find(primitive) || type.types[0]); // string & {}
    if (checker.isArrayType(type) || checker.isTupleType(type)) {
        const elements = checker.getTypeArguments(type).flatMap(kinds);
        return ["Array<" + [...new Set(elements)].sort().join("|") + ">"];
    }
    if (type.isTypeParameter())
        return ["any"];
    return [nameOf(type) || (type.getCallSignatures().length ? "function" : "object")];
}

function typeOf(symbol) {
    return checker.getTypeOfSymbolAtLocation(symbol, symbol.valueDeclaration || symbol.declarations[0]);
}

function signature(declared) {
    return {
        arguments: declared.getParameters().map((parameter) => ({
            name: parameter.name,
            kinds: kinds(checker.getNonNullableType(typeOf(parameter))),
            isOptional: checker.isOptionalParameter(parameter.valueDeclaration),
            isRest: Boolean(parameter.valueDeclaration.dotDotDotToken)
        })),
        result: kinds(declared.getReturnType())
    };
}

// The arguments of Signal<[name: type, ...]>.
function signalArguments(type) {
    const [tuple] = checker.getTypeArguments(type);
    const labels = tuple.target.labeledElementDeclarations || [];
    return checker.getTypeArguments(tuple).map((element, index) => ({
        name: labels[index] ? labels[index].name.text : "",
        kinds: kinds(element),
        isOptional: false
    }));
}

function member(symbol) {
    const type = typeOf(symbol);
    if (type.symbol && type.symbol.name === SIGNAL)
        return { kind: "signal", signatures: [{ arguments: signalArguments(type), result: ["void"] }] };
    if (symbol.flags & ts.SymbolFlags.Method)
        return { kind: "method", signatures: type.getCallSignatures().map(signature) };
    const isReadonly = symbol.flags & ts.SymbolFlags.Accessor
        ? !(symbol.flags & ts.SymbolFlags.SetAccessor)
        : Boolean(ts.getCombinedModifierFlags(symbol.valueDeclaration) & ts.ModifierFlags.Readonly);
    return { kind: "property", kinds: kinds(type), isReadonly };
}

function comment(symbol) {
    return ts.displayPartsToString(symbol.getDocumentationComment(checker)).trim();
}

function readExamples(symbol, name, out) {
    for (const node of symbol.declarations) {
        // What is declared as a variable has its comment at the statement around it.
        const holder = ts.isVariableDeclaration(node) ? node.parent.parent : node;
        for (const tag of ts.getJSDocTags(holder).filter((found) => found.tagName.text === "example")) {
            const line = tag.getSourceFile().getLineAndCharacterOfPosition(tag.pos).line + 1;
            out.push({ file: fileOf(node), line, name, code: ts.getTextOfJSDocComment(tag.comment) });
        }
    }
}

const answer = { globals: {}, types: {}, offers: {}, builtins: [], examples: [], gaps: [], errors: [] };

function readInterface(symbol) {
    const type = checker.getDeclaredTypeOfSymbol(symbol);
    const names = [symbol.name, ...(checker.getBaseTypes(type) || []).map(nameOf)];
    const entry = { file: fileOf(symbol.declarations[0]), isHost: names.includes(HOST), members: {} };
    for (const property of checker.getPropertiesOfType(type)) {
        entry.members[property.name] = member(property);
        if (program.isSourceFileDefaultLibrary(property.declarations[0].getSourceFile()))
            continue;
        if (!comment(property))
            answer.gaps.push(`${symbol.name}.${property.name} has no comment`);
        if (property.parent === symbol)
            readExamples(property, `${symbol.name}.${property.name}`, answer.examples);
    }
    readExamples(symbol, symbol.name, answer.examples);
    if (!comment(symbol) && !symbol.declarations.some((node) => program.isSourceFileDefaultLibrary(node.getSourceFile())))
        answer.gaps.push(`${symbol.name} has no comment`);
    if (entry.isHost && !answer.examples.some((example) => example.name === symbol.name))
        answer.gaps.push(`${symbol.name} has no @example`);
    answer.types[symbol.name] = entry;
}

function readAlias(symbol) {
    const type = checker.getDeclaredTypeOfSymbol(symbol);
    answer.offers[symbol.name] = (type.isUnion() ? type.types : [type])
        .filter((each) => each.isStringLiteral())
        .map((each) => each.value);
    if (!comment(symbol))
        answer.gaps.push(`${symbol.name} has no comment`);
}

function readGlobal(symbol) {
    const type = typeOf(symbol);
    answer.globals[symbol.name] = {
        file: fileOf(symbol.valueDeclaration),
        kinds: kinds(type),
        signatures: type.getCallSignatures().map(signature),
        constructors: type.getConstructSignatures().map(signature)
    };
    if (!comment(symbol))
        answer.gaps.push(`${symbol.name} has no comment`);
    const isFunction = symbol.flags & ts.SymbolFlags.Function;
    if (!(symbol.flags & ts.SymbolFlags.Interface))
        readExamples(symbol, symbol.name, answer.examples);
    if (isFunction && !answer.examples.some((example) => example.name === symbol.name))
        answer.gaps.push(`${symbol.name} has no @example`);
}

function readLibrary(symbol) {
    const type = typeOf(symbol);
    answer.builtins.push(symbol.name);
    if (!(symbol.flags & ts.SymbolFlags.Variable))
        return;
    const isOwn = (property) => !property.name.startsWith("__");
    for (const property of checker.getPropertiesOfType(type).filter(isOwn)) {
        answer.builtins.push(`${symbol.name}.${property.name}`);
        if (property.name !== "prototype")
            continue;
        for (const inner of checker.getPropertiesOfType(typeOf(property)).filter(isOwn)) {
            if (!(inner.flags & ts.SymbolFlags.Optional))
                answer.builtins.push(`${symbol.name}.prototype.${inner.name}`);
        }
    }
}

const EVERYTHING = ts.SymbolFlags.Value | ts.SymbolFlags.Interface | ts.SymbolFlags.TypeAlias;
for (const symbol of checker.getSymbolsInScope(program.getSourceFile(root), EVERYTHING)) {
    const declarations = symbol.declarations || [];
    const isOwn = declarations.some((node) => ownFiles.includes(node.getSourceFile()));
    if (isOwn && symbol.flags & ts.SymbolFlags.Interface)
        readInterface(symbol);
    if (isOwn && symbol.flags & ts.SymbolFlags.TypeAlias)
        readAlias(symbol);
    if (symbol.flags & ts.SymbolFlags.Value && declarations.length)
        (isOwn && ownFiles.includes(symbol.valueDeclaration.getSourceFile()) ? readGlobal : readLibrary)(symbol);
}

answer.errors = ts.getPreEmitDiagnostics(program).map((found) => {
    const text = ts.flattenDiagnosticMessageText(found.messageText, " ");
    if (!found.file)
        return text;
    return `${fileOf(found.file)}:${found.file.getLineAndCharacterOfPosition(found.start).line + 1}: ${text}`;
});

process.stdout.write(JSON.stringify(answer));
