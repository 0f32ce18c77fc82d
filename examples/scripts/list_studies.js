// Lists the primary studies of the session as a table.

var STATUS = { F: "completed", N: "scheduled", P: "preliminary", R: "reviewed", D: "draft", I: "in progress", L: "locked" };

function text(value) {
    return value === undefined ? "" : String(value);
}

// A person name reads "Family^Given^Middle^Prefix^Suffix", maybe in further scripts behind "=".
function personName(value) {
    var parts = text(value).split("=")[0].split("^");
    return parts.slice(0, 2).filter(Boolean).join(", ");
}

function row(study) {
    var date = study.getTag("DICOM.StudyDate");
    var modalities = study.getTag("DICOM.ModalitiesInStudy");
    return [
        personName(study.getTag("DICOM.PatientName")),
        date instanceof Date ? guiDate(date) : text(date),
        text(study.getTag("DICOM.StudyDescription")),
        modalities ? [].concat(modalities).join(", ") : text(study.getTag("DICOM.Modality")),
        STATUS[study.getInterpretationStatus()] || ""
    ];
}

function printTable(rows) {
    var widths = rows[0].map(function (_, column) {
        return Math.max.apply(null, rows.map(function (cells) { return cells[column].length; }));
    });
    rows.forEach(function (cells) {
        print(cells.map(function (cell, column) { return cell.padEnd(widths[column]); }).join("  ").replace(/ +$/, ""));
    });
}

var studies = StudyList.get("PRIMARY_STUDIES");
if (studies.length === 0) {
    print("No studies are open: kyrun --studies FOLDER list_studies.js");
} else {
    printTable([["Patient", "Date", "Description", "Modality", "Status"]].concat(studies.map(row)));
}
