// The studies of the sample as scripts see them.

test("the studies of the session come in the order of patient and date", function () {
    var dates = StudyList.get("PRIMARY_STUDIES").map(function (study) {
        return study.getTag("DICOM.PatientName") + " " + guiDate(study.getTag("DICOM.StudyDate"));
    });
    expect(dates).toHaveLength(3);
    expect(dates[0]).toContain("2024");
    expect(dates[2]).toMatch(/^S/);
});

test("all studies of the patient are those of the first one", function () {
    var all = StudyList.get("ALL_STUDIES_OF_PATIENT");
    expect(all).toHaveLength(2);
    expect(all[0].getTag("DICOM.PatientID")).toBe(all[1].getTag("DICOM.PatientID"));
});

test("a tag that is not there is undefined", function () {
    var study = StudyList.get("PRIMARY_STUDIES")[0];
    expect(study.getTag("DICOM.NoSuchTag")).toBeUndefined();
});

test("an unknown list is empty", function () {
    expect(StudyList.get("NO_SUCH_LIST")).toEqual([]);
});
