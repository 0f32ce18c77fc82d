// Opens a form in a browser, and writes what the user chooses there to the report.
//
//   kyworkstation --run examples/report-form/report_form.js
//
// The form lies beside this file. It reaches the script through a socket whose address only the form is told.

var here = String(new Error().fileName).replace(/^file:(\/\/)?/, ""); // this file
if (here[0] !== "/")
    here = System.getEnv("PWD") + "/" + here;
var page = "file://" + here.replace(/[^\/]*$/, "report_form.html");

// Globals, so that they live on behind the run.
var formSocket = WebSocketServer.registerSocket("report form");
var formBrowser = new BrowserCtrl("Report form");

function patientOnView() {
    var study = StudyList.get("PRIMARY_STUDIES")[0];
    return study ? String(study.getTag("DICOM.PatientName") || "").split("^").filter(Boolean).join(", ") : "";
}

function written(report) {
    var lines = [
        "Findings: " + (report.findings || "none"),
        "Lungs: " + report.lungs,
        "Pleural effusion: " + (report.effusion ? "yes" : "no"),
        "Pneumothorax: " + (report.pneumothorax ? "yes" : "no")
    ];
    var editor = Orvane.editor("Report");
    if (!editor)
        return false;
    editor.text = lines.join("\n");
    editor.open();
    return true;
}

formSocket.messageReceived.connect(function (text) {
    var message = JSON.parse(text);
    if (message.hello)
        formSocket.sendText(JSON.stringify({ patient: patientOnView() }));
    else if (message.ready)
        print("The form is ready.");
    else if (message.report)
        formSocket.sendText(JSON.stringify({ written: written(message.report) }));
});

formBrowser.sendCommand("URL " + page + "#" + encodeURIComponent(formSocket.getURL()) + ";SHOW");
