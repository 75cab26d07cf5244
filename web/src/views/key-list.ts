// The keys of one part of the page, for the list that "?" opens.

export interface KeyList {
    readonly title: string;
    /** Keys that do the same, and what that is. Names of keys are those of their caps. */
    readonly keys: readonly (readonly [keys: readonly string[], what: string])[];
}
