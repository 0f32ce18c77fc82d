// Writes the primary studies of the session as a table that spreadsheet programs open (RFC 4180, UTF-8).
//
//   kyrun --studies FOLDER export_studies_csv.js FILE.csv
//
// In the workstation, which has no command line for scripts, the user chooses the file.

var COLUMNS = ["PatientID", "PatientName", "AccessionNumber", "StudyDate", "StudyDescription", "StudyInstanceUID"];

function twoDigits(number) {
    return ("0" + number).slice(-2);
}

// Dates as 2024-03-11, in every language of the user; what a study doesn't have is empty.
function text(value) {
    if (value instanceof Date)
        return [value.getFullYear(), twoDigits(value.getMonth() + 1), twoDigits(value.getDate())].join("-");
    return value === undefined || value === null ? "" : String(value);
}

function cell(value) {
    return /[",\r\n]/.test(value) ? '"' + value.replace(/"/g, '""') + '"' : value;
}

function line(values) {
    return values.map(cell).join(",") + "\r\n";
}

function row(study) {
    return line(COLUMNS.map(function (column) { return text(study.getTag("DICOM." + column)); }));
}

var path = typeof Runner === "object" ? Runner.args[0]
                                      : new FileDialog().getSaveFileName("studies.csv", "Tables (*.csv);;All files (*)");
if (path) {
    var studies = StudyList.get("PRIMARY_STUDIES");
    // The mark at the start tells spreadsheet programs that the text is UTF-8.
    var table = "\ufeff" + line(COLUMNS) + studies.map(row).join("");
    if (!new FileWriter().saveFile(path, table))
        throw new Error("Cannot write " + path);
}
