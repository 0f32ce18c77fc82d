/** Size of a lesion, measured once. */
export interface Measurement {
    readonly taken: Date;
    readonly millilitres: number;
}

const dayInMs = 24 * 60 * 60 * 1000;

/** Days in which the volume doubles, assuming exponential growth; undefined when it does not grow. */
export function doublingTime(first: Measurement, second: Measurement): number | undefined {
    const days = (second.taken.getTime() - first.taken.getTime()) / dayInMs;
    const doublings = Math.log2(second.millilitres / first.millilitres);
    return days > 0 && doublings > 0 ? days / doublings : undefined;
}

/** Measurements in the order of time, whatever order they came in. */
export class Course {
    #measurements: Measurement[] = [];

    add(measurement: Measurement): this {
        this.#measurements = [...this.#measurements, measurement].sort((a, b) => +a.taken - +b.taken);
        return this;
    }

    /** From the first to the last measurement. */
    get doublingTime(): number | undefined {
        const first = this.#measurements[0];
        const last = this.#measurements[this.#measurements.length - 1];
        return first && last ? doublingTime(first, last) : undefined;
    }
}
