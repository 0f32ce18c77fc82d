import { Course, doublingTime } from "./doubling";

const at = (day: number, millilitres: number) => ({ taken: new Date(2024, 0, day), millilitres });

test("twice the volume after ten days doubles in ten days", () => {
    expect(doublingTime(at(1, 1), at(11, 2))).toBeCloseTo(10);
});

test("what does not grow never doubles", () => {
    expect(doublingTime(at(1, 2), at(11, 2))).toBeUndefined();
    expect(doublingTime(at(1, 1), at(1, 2))).toBeUndefined();
});

test("a course is in the order of time", async () => {
    const course = new Course().add(at(11, 2)).add(at(1, 1));
    await Promise.resolve();
    expect(course.doublingTime).toBeCloseTo(10);
    expect(new Course().doublingTime).toBeUndefined();
});
