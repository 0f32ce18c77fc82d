// Writes the primary studies of the session as an XML document, FOLDER/studies.xml. The folder is made if need be.
//
//   kyrun --studies FOLDER export_studies_xml.js FOLDER

var TAGS = ["PatientID", "PatientName", "AccessionNumber", "StudyDate", "StudyDescription", "ModalitiesInStudy"];

// XML can't hold most control characters, nor half a character: one of them would spoil the rest of the document.
function clean(text) {
    return text.replace(/[\u0000-\u0008\u000b\u000c\u000e-\u001f\ufffe\uffff]/g, "")
        .replace(/[\ud800-\udbff](?![\udc00-\udfff])/g, "")
        .replace(/(^|[^\ud800-\udbff])[\udc00-\udfff]+/g, "$1");
}

function twoDigits(number) {
    return ("0" + number).slice(-2);
}

// Dates as 2024-03-11, in every language of the user; what a study doesn't have is empty.
function text(value) {
    if (value instanceof Date)
        return [value.getFullYear(), twoDigits(value.getMonth() + 1), twoDigits(value.getDate())].join("-");
    return value === undefined || value === null ? "" : clean(String(value));
}

function writeStudy(xml, study) {
    xml.writeStartElement("study");
    xml.writeAttribute("uid", text(study.getTag("DICOM.StudyInstanceUID")));
    TAGS.forEach(function (tag) { xml.writeTextElement(tag, text(study.getTag("DICOM." + tag))); });
    xml.writeEndElement();
}

var folder = Runner.args[0];
var xml = new XmlFileWriter();
if (!xml.openFile(folder, "studies", false))
    throw new Error("Cannot write to " + folder);
xml.writeStartDocument();
xml.writeStartElement("studies");
StudyList.get("PRIMARY_STUDIES").forEach(function (study) { writeStudy(xml, study); });
xml.writeEndDocument();
xml.closeFile();
