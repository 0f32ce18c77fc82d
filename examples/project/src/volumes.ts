import { Course } from "./doubling";

function wait(milliseconds: number): Promise<void> {
    return new Promise((resolve) => {
        const timer = new Timer();
        timer.setSingleShot(true);
        // The handler refers to the timer, and so keeps it until it has fired.
        timer.timeout.connect(() => { timer.stop(); resolve(); });
        timer.start(milliseconds);
    });
}

/** As if a web service had answered. */
async function measured(taken: Date): Promise<number> {
    await wait(1);
    return taken.getFullYear() > 2024 ? 1.6 : 0.8;
}

/** Studies answer during a run of the script only, which ends at the first `await`. So their tags are read before. */
function studyDates(): Date[] {
    return StudyList.get("ALL_STUDIES_OF_PATIENT")
        .map((study) => study.getTag("DICOM.StudyDate"))
        .filter((date): date is Date => date instanceof Date);
}

async function main() {
    const course = new Course();
    for (const taken of studyDates())
        course.add({ taken, millilitres: await measured(taken) });
    print(`Doubling time: ${course.doublingTime?.toFixed(0) ?? "unknown"} days`);
    Runner.exit(0);
}

Runner.keepRunning = true;
main().catch((error) => {
    Message.error(String(error));
    Runner.exit(1);
});
