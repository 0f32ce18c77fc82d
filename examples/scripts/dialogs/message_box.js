// A message box: asks what to do with a report, and tells the answer.

var reportQuestion = new Dialog({
    title: "Report",
    message: "The report was changed, but not sent.<br>What do you want to do with it?",
    buttons: [
        { text: "Send", toolTip: "Send the report now" },
        { text: "Send Later", menuItems: [
            { text: "In an Hour" },
            { text: "Tomorrow Morning", toolTip: "At 8 o'clock" }
        ] },
        "Discard"
    ],
    context: "Report Question",
    autoClose: true
});

reportQuestion.processed.connect(function () {
    var button = reportQuestion.clickedButton();
    if (reportQuestion.autoClosed()) {
        print("The studies were closed before an answer.");
    } else if (button === 0) {
        print("The report is sent.");
    } else if (button === 1) {
        print("The report is sent", ["in an hour.", "tomorrow morning."][reportQuestion.clickedButtonMenuItem()]);
    } else if (button === 2) {
        print("The report is discarded.");
    } else {
        print("The report stays as it is.");
    }
});

reportQuestion.show();
