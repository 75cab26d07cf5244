// The captures that are shown, in their groups and order. Changes keep the order by binary search; nothing is
// sorted anew for one capture.
import { dayOf, type Capture } from "./capture.js";
import { compareOf, compareTexts, placeOf, type Compare, type Sort } from "./order.js";

export const GROUPINGS = ["day", "game"] as const;
export type Grouping = (typeof GROUPINGS)[number];

export interface Group {
    readonly key: string;
    readonly captures: Capture[];
    /** How many captures the groups before this one have. */
    start: number;
}

export class Arrangement {
    readonly groups: Group[] = [];
    readonly #byKey = new Map<string, Group>();
    readonly #compare: Compare;
    #total = 0;

    constructor(
        captures: Iterable<Capture>,
        readonly grouping: Grouping,
        readonly sort: Sort,
    ) {
        this.#compare = compareOf(sort);
        for (const capture of captures) {
            const key = this.#keyOf(capture);
            const group = this.#byKey.get(key);
            if (group) group.captures.push(capture);
            else this.#byKey.set(key, { key, captures: [capture], start: 0 });
        }
        for (const group of this.#byKey.values()) group.captures.sort(this.#compare);
        this.groups.push(...[...this.#byKey.values()].sort((a, b) => this.#compareGroups(a, b)));
        this.count();
    }

    get length(): number {
        return this.#total;
    }

    at(index: number): Capture | undefined {
        const group = this.groups[this.groupAt(index)];
        return group?.captures[index - group.start];
    }

    /** The place of a capture in the whole order, or -1. */
    indexOf(capture: Capture): number {
        const group = this.#byKey.get(this.#keyOf(capture));
        if (!group) return -1;
        const place = placeOf(group.captures, capture, this.#compare);
        return group.captures[place]?.path === capture.path ? group.start + place : -1;
    }

    /** The group that an index of the whole order falls into. */
    groupAt(index: number): number {
        let low = 0;
        let high = this.groups.length - 1;
        while (low < high) {
            const middle = (low + high + 1) >> 1;
            if (this.groups[middle]!.start <= index) low = middle;
            else high = middle - 1;
        }
        return low;
    }

    /** The captures from one index to another, both included, in either direction. */
    between(first: number, last: number): Capture[] {
        const [from, to] = first <= last ? [first, last] : [last, first];
        const found: Capture[] = [];
        for (let index = Math.max(from, 0); index <= Math.min(to, this.#total - 1); ++index)
            found.push(this.at(index)!);
        return found;
    }

    /** Groups that are there keep their places, so that nothing jumps while somebody looks at it. */
    insert(capture: Capture): void {
        const key = this.#keyOf(capture);
        let group = this.#byKey.get(key);
        if (!group) {
            group = { key, captures: [], start: 0 };
            this.#byKey.set(key, group);
            const added: Group = { key, captures: [capture], start: 0 };
            const place = this.groups.findIndex((other) => this.#compareGroups(added, other) < 0);
            this.groups.splice(place < 0 ? this.groups.length : place, 0, group);
        }
        group.captures.splice(placeOf(group.captures, capture, this.#compare), 0, capture);
    }

    remove(capture: Capture): void {
        const group = this.#byKey.get(this.#keyOf(capture));
        if (!group) return;
        const place = placeOf(group.captures, capture, this.#compare);
        if (group.captures[place]?.path !== capture.path) return;
        group.captures.splice(place, 1);
        if (group.captures.length > 0) return;
        this.#byKey.delete(group.key);
        this.groups.splice(this.groups.indexOf(group), 1);
    }

    /** Ends a series of changes: until then indexes and length are those from before it. */
    count(): void {
        this.#total = 0;
        for (const group of this.groups) {
            group.start = this.#total;
            this.#total += group.captures.length;
        }
    }

    #keyOf(capture: Capture): string {
        return this.grouping === "game" ? capture.game : dayOf(capture);
    }

    #compareGroups(a: Group, b: Group): number {
        if (this.grouping === "day")
            return this.sort === "oldest" ? compareTexts(a.key, b.key) : compareTexts(b.key, a.key);
        if (this.sort === "name") return compareTexts(a.key, b.key);
        return this.#compare(a.captures[0]!, b.captures[0]!);
    }
}
