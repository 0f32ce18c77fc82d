// A busy indicator with progress: works step by step on a timer, so that the application goes on meanwhile.

var STEPS = 20;

var checkDialog = new Dialog({
    title: "Checking Images",
    message: "The images are being checked.",
    buttons: ["Close", "Cancel"],
    manuallyCloseDialog: true,
    context: "Image Check",
    autoClose: true,
    initialSize: [380, 100]
});
var checkTimer = new Timer();
var checkStep = 0;

function finishCheck(text) {
    checkTimer.stop();
    checkDialog.setStatus(false, text);
    checkDialog.setButtonEnabled(0, true);
    checkDialog.setButtonEnabled(1, false);
    print(text);
}

checkTimer.timeout.connect(function () {
    ++checkStep;
    if (checkStep > STEPS) {
        finishCheck("All " + STEPS + " images are in order.");
    } else {
        checkDialog.setStatus(true, "Image " + checkStep + " of " + STEPS);
    }
});

checkDialog.processed.connect(function () {
    var isRunning = checkStep <= STEPS && checkTimer.remainingTime() >= 0;
    if (!checkDialog.visible) {
        if (isRunning) {
            finishCheck("Ended with the dialog.");
        }
    } else if (checkDialog.clickedButton() === 1) {
        finishCheck("Cancelled at image " + checkStep + ".");
    } else {
        checkDialog.close();
    }
});

checkDialog.setButtonEnabled(0, false);
checkDialog.setStatus(true, "Starting");
checkDialog.show();
checkTimer.start(100);
