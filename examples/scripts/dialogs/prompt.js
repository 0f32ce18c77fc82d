// A prompt: asks for a date and looks at it before it closes. Enter in the line counts as "Go to Date".

var datePrompt = new Dialog({
    title: "Go to Date",
    message: "Date of the study (day.month.year):",
    showLineEdit: true,
    lineEditEnabled: true,
    lineEditPlaceholder: "31.12.2024",
    buttons: ["Go to Date", "Cancel"],
    manuallyCloseDialog: true,
    context: "Date Prompt"
});

function parseDate(text) {
    var parts = /^\s*(\d{1,2})\.(\d{1,2})\.(\d{4})\s*$/.exec(text);
    if (!parts) {
        return null;
    }
    var date = new Date(Number(parts[3]), Number(parts[2]) - 1, Number(parts[1]));
    return date.getDate() === Number(parts[1]) && date.getMonth() === Number(parts[2]) - 1 ? date : null;
}

datePrompt.processed.connect(function () {
    if (!datePrompt.visible) {
        return;
    }
    var button = datePrompt.clickedButton(); // 0 or 1, and -3 for Enter
    if (button === 1) {
        datePrompt.close();
        return;
    }
    var date = parseDate(datePrompt.lineEditText());
    if (date) {
        print("Going to", guiDate(date));
        datePrompt.close();
    } else {
        datePrompt.setMessage("<b>“" + datePrompt.lineEditText().replace(/&/g, "&amp;").replace(/</g, "&lt;") +
                              "” is no date.</b><br>Date of the study (day.month.year):");
    }
});

datePrompt.show();
