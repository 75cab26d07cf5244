// Message envelopes: what a page sends to a module, and what comes back.

export const ORDINARY = 3072;
export const PERSISTENT = 3073; // a subscription, and each notification for it

/** The module that answers: the gallery itself, or the program that serves the page. */
export type Module = "Gallery" | "Host";

export interface Envelope {
    system?: string;
    module?: string;
    method: string;
    uniqueid: string;
    type: number;
    payload: Record<string, unknown>;
    source_system?: string;
    source_module?: string;
    reference_uniqueid?: string;
}

/** A request that failed: the code and the text of its answer, or of the channel that lost it. */
export class ApiError extends Error {
    constructor(
        readonly code: number,
        text: string,
    ) {
        super(text);
        this.name = "ApiError";
    }
}

/** The code with which a channel ends a query that nobody answers any more. */
export const CANCELED = -1;
/** The code of a server that knows the page's token no longer. */
export const OUTDATED = 4401;

/** The gallery's own answer, and not the end of the channel. */
export function isRefusal(error: unknown): boolean {
    return error instanceof ApiError && error.code !== CANCELED && error.code !== OUTDATED;
}

// Other pages of the client share the channel, so that a count alone would not be unique.
const origin = Array.from(crypto.getRandomValues(new Uint32Array(3)), (part) => part.toString(16)).join("");
let created = 0;

export function makeEnvelope(module: Module, method: string, payload: object, type = ORDINARY): Envelope {
    return {
        system: "CobalixNative",
        module,
        method,
        uniqueid: `page-${origin}-${++created}`,
        type,
        payload: { ...payload },
        source_system: "Page",
        source_module: "Gallery",
    };
}

/** The envelope in a text of the channel. Throws ApiError when it holds none. */
export function parseEnvelope(text: string): Envelope {
    let value: unknown;
    try {
        value = JSON.parse(text);
    } catch {
        throw new ApiError(CANCELED, "The answer is not JSON");
    }
    if (typeof value !== "object" || value === null || Array.isArray(value))
        throw new ApiError(CANCELED, "The answer is not an object");
    const envelope = value as Envelope;
    if (typeof envelope.payload !== "object" || envelope.payload === null) envelope.payload = {};
    return envelope;
}

/** The payload of a successful answer. Throws ApiError when the answer reports a failure. */
export function payloadOf(envelope: Envelope): Record<string, unknown> {
    const { _return_code: code, _return_status: status } = envelope.payload;
    if (typeof code === "number" && code !== 0)
        throw new ApiError(code, typeof status === "string" ? status : "");
    return envelope.payload;
}
