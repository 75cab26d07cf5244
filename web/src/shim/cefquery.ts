// Puts the container's query functions on the window of a page that a server shows instead. Pages cannot tell the
// two apart: same arguments, same exceptions, same order of callbacks.

/** What carries the queries. It calls the handlers below; texts that are sent while it is not ready wait here. */
export interface Carrier {
    /** False while nothing can be sent. */
    readonly ready: boolean;
    send(text: string): void;
}

interface Query {
    readonly id: number;
    readonly request: string;
    readonly reference: string;
    readonly persistent: boolean;
    readonly onSuccess: ((response: string) => void) | undefined;
    readonly onFailure: ((code: number, text: string) => void) | undefined;
    sent: boolean;
}

interface Frame {
    reference_uniqueid?: unknown;
    resync?: unknown;
    error?: { code?: unknown; text?: unknown };
}

const CANCELED = -1;
const CANCELED_TEXT = "The query has been canceled";

function optional(value: unknown, type: "function" | "boolean", name: string): void {
    if (value !== undefined && typeof value !== type)
        throw new Error(`Invalid arguments; ${name} has to be a ${type}`);
}

function referenceOf(request: string): string {
    try {
        const envelope: unknown = JSON.parse(request);
        const id = (envelope as { uniqueid?: unknown } | null)?.uniqueid;
        return typeof id === "string" ? id : "";
    } catch {
        return "";
    }
}

// A page's exception must not keep other queries from their answers.
function call(callback: () => void): void {
    try {
        callback();
    } catch (error) {
        reportError(error);
    }
}

export class Queries {
    readonly #open = new Map<number, Query>();
    readonly #byReference = new Map<string, Query>();
    #last = 0;
    #refusal: { code: number; text: string } | null = null;

    constructor(private readonly carrier: Carrier) {}

    query = (...given: unknown[]): number => {
        const query = this.#read(given);
        const fault = this.#refusal ?? this.#faultOf(query);
        this.#open.set(query.id, query);
        if (fault) {
            queueMicrotask(() => this.#fail(query, fault.code, fault.text));
            return query.id;
        }
        this.#byReference.set(query.reference, query);
        if (this.carrier.ready) this.#send(query);
        return query.id;
    };

    cancel = (...given: unknown[]): boolean => {
        if (given.length !== 1 || !Number.isInteger(given[0]))
            throw new Error("Invalid arguments; expecting a single integer");
        const query = this.#open.get(given[0] as number);
        if (query) this.#forget(query);
        return query !== undefined;
    };

    /** The carrier can send, for the first time or again. */
    onReady(): void {
        this.#refusal = null;
        for (const query of [...this.#open.values()]) if (!query.sent) this.#send(query);
    }

    /** What was sent gets no answer any more. What came in since waits for the next connection. */
    onLost(): void {
        for (const query of [...this.#open.values()])
            if (query.sent) this.#fail(query, CANCELED, CANCELED_TEXT);
    }

    /** The other side wants no queries of this page, until onReady. */
    onRefused(code: number, text: string): void {
        this.#refusal = { code, text };
        for (const query of [...this.#open.values()]) this.#fail(query, code, text);
    }

    onFrame(text: string): void {
        const frame = JSON.parse(text) as Frame;
        if (frame.resync === true) {
            for (const query of [...this.#open.values()]) if (query.persistent) this.#succeed(query, text);
            return;
        }
        const query = this.#byReference.get(String(frame.reference_uniqueid));
        if (!query) return;
        if (frame.error === undefined) return this.#succeed(query, text);
        const { code, text: reason } = frame.error;
        this.#fail(query, typeof code === "number" ? code : CANCELED, String(reason ?? CANCELED_TEXT));
    }

    #read(given: unknown[]): Query {
        const asked = given[0] as Record<string, unknown> | null;
        if (given.length !== 1 || typeof asked !== "object" || asked === null)
            throw new Error("Invalid arguments; expecting a single object");
        const { request, onSuccess, onFailure, persistent } = asked;
        if (typeof request !== "string") throw new Error("Invalid arguments; request has to be a string");
        optional(onSuccess, "function", "onSuccess");
        optional(onFailure, "function", "onFailure");
        optional(persistent, "boolean", "persistent");
        return {
            id: ++this.#last,
            request,
            reference: referenceOf(request),
            persistent: persistent === true,
            onSuccess: onSuccess as Query["onSuccess"],
            onFailure: onFailure as Query["onFailure"],
            sent: false,
        };
    }

    // Nobody could match an answer to it.
    #faultOf(query: Query): { code: number; text: string } | null {
        const unmatched = query.reference === "" || this.#byReference.has(query.reference);
        return unmatched ? { code: CANCELED, text: CANCELED_TEXT } : null;
    }

    #send(query: Query): void {
        query.sent = true;
        this.carrier.send(query.request);
    }

    #succeed(query: Query, text: string): void {
        if (!query.persistent) this.#forget(query);
        call(() => query.onSuccess?.(text));
    }

    #fail(query: Query, code: number, text: string): void {
        if (!this.#open.has(query.id)) return;
        this.#forget(query);
        call(() => query.onFailure?.(code, text));
    }

    #forget(query: Query): void {
        this.#open.delete(query.id);
        if (this.#byReference.get(query.reference) === query) this.#byReference.delete(query.reference);
    }
}

/** Defines the functions as the container does: pages can neither see, replace nor delete them. */
export function install(
    window: object,
    queries: Queries,
    names: { query: string; cancel: string } = { query: "cefQuery", cancel: "cefQueryCancel" },
): void {
    const fixed = { writable: false, enumerable: false, configurable: false };
    Object.defineProperty(window, names.query, { value: queries.query, ...fixed });
    Object.defineProperty(window, names.cancel, { value: queries.cancel, ...fixed });
}
