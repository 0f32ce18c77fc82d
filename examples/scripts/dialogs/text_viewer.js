// A text viewer with links: the studies of the session, and the details of the one that is clicked.

function escapeHtml(text) {
    return String(text === undefined ? "" : text).replace(/&/g, "&amp;").replace(/</g, "&lt;");
}

function studyDate(study) {
    var date = study.getTag("DICOM.StudyDate");
    return date instanceof Date ? guiDate(date) : "without a date";
}

function listOfStudies() {
    var studies = StudyList.get("PRIMARY_STUDIES");
    if (studies.length === 0) {
        return "<p>No studies are open.</p>";
    }
    return "<h3>Open Studies</h3><ul>" + studies.map(function (study) {
        return "<li><a href=\"study:" + escapeHtml(study.getTag("DICOM.StudyInstanceUID")) + "\">" +
               escapeHtml(study.getTag("DICOM.StudyDescription") || "Study") + "</a>, " + studyDate(study) + "</li>";
    }).join("") + "</ul>";
}

function detailsOf(uid) {
    var study = StudyList.get(uid)[0];
    if (!study) {
        return "<p>This study is not open any more.</p><p><a href=\"list:\">All studies</a></p>";
    }
    var rows = [["Patient", "PatientName"], ["Patient ID", "PatientID"], ["Description", "StudyDescription"],
                ["Accession number", "AccessionNumber"]];
    return "<h3>" + escapeHtml(study.getTag("DICOM.StudyDescription") || "Study") + "</h3><table>" +
           rows.map(function (row) {
               return "<tr><td>" + row[0] + ":&nbsp;&nbsp;</td><td>" + escapeHtml(study.getTag("DICOM." + row[1])) +
                      "</td></tr>";
           }).join("") + "<tr><td>Date:</td><td>" + studyDate(study) + "</td></tr></table>" +
           "<p><a href=\"list:\">All studies</a></p>";
}

var studyViewer = new Dialog({
    title: "Studies",
    message: "Click a study to see more of it.",
    fieldText: listOfStudies(),
    useTextBrowser: true,
    buttons: ["Close"],
    context: "Study Viewer",
    initialSize: [460, 340]
});

studyViewer.linkClicked.connect(function (url) {
    var isStudy = url.indexOf("study:") === 0;
    studyViewer.setFieldText(isStudy ? detailsOf(url.substring(6)) : listOfStudies(), "html");
    studyViewer.scrollToTop();
});

studyViewer.show();
