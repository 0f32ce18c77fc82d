// Studies and their tags.

/**
 * Tags that scripts often read. Every element can be read: by keyword (`"DICOM.PatientName"`), by number
 * (`"DICOM.(0010,0020)"`), private ones by their creator (`'DICOM.(0029,"ACME CT 01",10)'`), and by the way into
 * sequences (`"DICOM.RequestAttributesSequence[1].ScheduledProcedureStepID"`).
 */
type DicomTag =
    | "DICOM.PatientName"
    | "DICOM.PatientID"
    | "DICOM.PatientBirthDate"
    | "DICOM.PatientSex"
    | "DICOM.AccessionNumber"
    | "DICOM.StudyInstanceUID"
    | "DICOM.StudyID"
    | "DICOM.StudyDate"
    | "DICOM.StudyTime"
    | "DICOM.StudyDescription"
    | "DICOM.ModalitiesInStudy"
    | "DICOM.Modality"
    | "DICOM.BodyPartExamined"
    | "DICOM.InstitutionName"
    | "DICOM.ReferringPhysicianName"
    | "DICOM.NumberOfStudyRelatedSeries"
    | "DICOM.NumberOfStudyRelatedInstances"
    | "DICOM.SeriesInstanceUID"
    | "DICOM.SeriesDescription"
    | "DICOM.SeriesNumber"
    | "DICOM.InstanceNumber"
    | "DICOM.SliceThickness"
    | "DICOM.PixelSpacing"
    | "DICOM.WindowCenter"
    | "DICOM.WindowWidth"
    | (string & {});

/** Tags of the worklist entry of a study. */
type WorklistTag =
    | "Worklist.Assignee"
    | "Worklist.Status"
    | "Worklist.Flags"
    | "Worklist.StudyInstanceUID"
    | "Worklist.AccessionNumber"
    | "Worklist.PatientID"
    | "Worklist.PatientName"
    | "Worklist.PatientBirthDate"
    | "Worklist.PatientSex"
    | "Worklist.RequestedProcedureID"
    | "Worklist.RequestedProcedureDescription"
    | "Worklist.ScheduledDateTime"
    | "Worklist.Modality"
    | "Worklist.Location"
    | "Worklist.Priority"
    | "Worklist.ReferringPhysician"
    | "Worklist.Comment";

/**
 * The value of a tag. Which kind it is depends on the data, so convert what you use:
 *
 * - a string for texts, and for a value that its element does not allow, such as the date "19991332"
 * - a number for numbers, and for a sequence, whose number of items it is
 * - a Date for dates, at local midnight; an object that prints as the time for times ({@link TimeOfDay})
 * - an ArrayBuffer for bytes
 * - an array of these where the element has several values
 * - undefined for an element that is not there, a name that is wrong, and pixel data
 */
type TagValue = any;

/** Names of study lists. Any other text is taken as a study instance UID. */
type StudyListName =
    | "PRIMARY_STUDIES"
    | "ADDITIONAL_STUDIES"
    | "PRIMARY_STUDIES_OLD"
    | "ADDITIONAL_STUDIES_OLD"
    | "ACTIVE_VIEWER"
    | "ACTIVE_LAYOUT"
    | "ALL_STUDIES_OF_PATIENT"
    | "RELEVANT_STUDIES_OF_PATIENT"
    | (string & {});

/**
 * One study: its DICOM tags, its worklist entry, how far its interpretation is, the time spent on it.
 *
 * Study objects end with the run that fetched them: afterwards they answer as a study that knows nothing. Keep the
 * study instance UID instead, and fetch the study again.
 *
 * @example
 * StudyList.get("PRIMARY_STUDIES").forEach(function (study) {
 *     print(study.getTag("DICOM.PatientName"), study.getInterpretationStatus());
 * });
 */
interface Study extends HostObject {
    /**
     * The value of a tag: "DICOM." and an element of the study's first instance, or "Worklist." and a column of its
     * worklist entry, which is always a text. Errors: none; a wrong name has no value.
     * Neutral: undefined.
     *
     * @example
     * var study = StudyList.get("PRIMARY_STUDIES")[0];
     * var date = study && study.getTag("DICOM.StudyDate");
     * print(date instanceof Date ? guiDate(date) : "no date");
     */
    getTag(tagName: DicomTag | WorklistTag): TagValue;

    /** The status word of the worklist entry. Neutral: empty. */
    worklistStatus(): string;
    /** Whom the worklist entry is assigned to. Neutral: empty. */
    worklistAssignee(): string;
    /** The flags of the worklist entry, whose meaning is the worklist's. Neutral: 0. */
    worklistFlags(): number;
    /** Whether the session was loaded from the worklist; the same for all its studies. */
    loadedFromWorklist(): boolean;

    /** Reading time spent on the study, in seconds. Neutral: 0. */
    getTimeSpent(): number;
    /**
     * How far the interpretation is: completed (F), scheduled (N), preliminary (P), reviewed (R), draft (D), in
     * progress (I), locked (L). Neutral, and for any other state: empty.
     */
    getInterpretationStatus(): "F" | "N" | "P" | "R" | "D" | "I" | "L" | "";
    /**
     * Whether another object stands for the same study. Two fetches of a study give different objects: compare with
     * this, not with `===`.
     */
    equals(other: Study | null): boolean;
}

/**
 * Lists of the studies that matter now, and set operations on them.
 *
 * @example
 * var all = StudyList.get("ALL_STUDIES_OF_PATIENT");
 * var priors = StudyList.subtract(all, StudyList.get("PRIMARY_STUDIES"));
 * print("prior studies:", priors.length);
 */
interface StudyList extends HostObject {
    /**
     * The studies of a list, in its order: those that are to be read, those loaded beside them, the same two before the
     * session last changed, that of the active viewer, those of all viewers, all of the first primary study's patient,
     * and those of them that are relevant or pinned. Any other text is taken as a study instance UID.
     * Neutral, also for an unknown list: an empty array.
     */
    get(inStudyListName: StudyListName): Study[];
    /**
     * All studies of both lists, once each, by patient and date. Of two objects for a study the one of the first list.
     */
    unite(inStudyListA: Study[], inStudyListB: Study[]): Study[];
    /** The studies of the first list that are not in the second, by patient and date. */
    subtract(inStudyListA: Study[], inStudyListB: Study[]): Study[];
    /** The studies of the first list that are in the second too, by patient and date. */
    intersect(inStudyListA: Study[], inStudyListB: Study[]): Study[];
    /**
     * Locks the worklist entries of the studies for reporting. Studies without one are left out. Whether the lock took
     * is not told.
     */
    lockForReporting(inStudyList: Study[]): void;
}

/** Lists of the studies that matter now. */
declare const StudyList: StudyList;
