// Starts a dictation program for the first primary study, and puts its accession number on the clipboard.
//
//   kyrun --studies FOLDER start_dictation.js [PROGRAM]
//
// The program is looked for in the folders of programs. It runs on its own: nobody waits for it.

var PROGRAM = "Dictation/dictate.exe";

function required(value, what) {
    if (!value)
        throw new Error("There is no " + what);
    return value;
}

function start(study, program) {
    var accession = study.getTag("DICOM.AccessionNumber") || "";
    var args = ["--accession", accession, "--patient", study.getTag("DICOM.PatientID") || ""];
    if (!System.startDetached(program, args))
        throw new Error("Cannot start " + program);
    System.setClipboardText(accession);
}

var name = typeof Runner === "object" && Runner.args[0] || PROGRAM;
var study = required(StudyList.get("PRIMARY_STUDIES")[0], "study");
start(study, required(System.findCmd(name), "program " + name));
