// A text editor that stays open while its buttons are used: "Insert" adds phrases, "Save" keeps the text.

var PHRASES = [
    { text: "Normal", phrase: "No pathological findings." },
    { text: "Unchanged", phrase: "No change since the prior study." },
    { text: "Follow-up", phrase: "Follow-up in three months is recommended." }
];

// A plain variable of the engine: what a handler puts into Global would not be kept.
var savedNote = savedNote || "";

var noteEditor = new Dialog({
    title: "Note",
    message: "Your note on this case:",
    fieldText: savedNote,
    editable: true,
    buttons: ["Save", { text: "Insert", menuItems: PHRASES }, "Close"],
    buttonToolTips: ["Keep the note until the application ends"],
    manuallyCloseDialog: true,
    context: "Note Editor",
    initialSize: [460, 300]
});

function insert(phrase) {
    var text = noteEditor.fieldText();
    noteEditor.setFieldText(text + (text && !/\n$/.test(text) ? "\n" : "") + phrase + "\n", "plaintext");
    noteEditor.scrollToBottom();
}

// Read the answer at once: in this mode it is gone after the handler.
noteEditor.processed.connect(function () {
    if (!noteEditor.visible) {
        return; // closed by its title bar, by Escape, or below
    }
    var button = noteEditor.clickedButton();
    if (button === 0) {
        savedNote = noteEditor.fieldText();
        noteEditor.setStatus(true);
        noteEditor.setStatus(false, "Saved at " + guiTime(new Date()));
        print("Saved:", savedNote);
    } else if (button === 1) {
        insert(PHRASES[noteEditor.clickedButtonMenuItem()].phrase);
    } else {
        noteEditor.close();
    }
});

noteEditor.show();
