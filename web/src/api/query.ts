// Pairs envelopes with queries of the channel that the container, or the server's shim, puts on the window. What
// the container leaves open is decided here alone: the answer to a query is the envelope that references it, and
// each notification is one more success of its persistent query.
import { ApiError, CANCELED, parseEnvelope, type Envelope } from "./envelope.js";

export interface Query {
    request: string;
    persistent?: boolean;
    onSuccess?: (response: string) => void;
    onFailure?: (code: number, text: string) => void;
}

/** The two functions of the channel. */
export interface Channel {
    query(query: Query): number;
    cancel(id: number): boolean;
}

/** The channel's functions on the window; the container can be configured to name them otherwise. */
export function channelOf(
    window: object,
    queryName = "cefQuery",
    cancelName = "cefQueryCancel",
): Channel | null {
    const functions = window as Record<string, unknown>;
    const query = functions[queryName];
    const cancel = functions[cancelName];
    if (typeof query !== "function" || typeof cancel !== "function") return null;
    return { query: (asked) => query(asked), cancel: (id) => cancel(id) };
}

/** Sends a request; resolves with the answer, rejects with ApiError when the channel has none. */
export function ask(channel: Channel, envelope: Envelope): Promise<Envelope> {
    return new Promise((resolve, reject) => {
        channel.query({
            request: JSON.stringify(envelope),
            onSuccess(text) {
                try {
                    const answer = parseEnvelope(text);
                    if (answer.reference_uniqueid !== envelope.uniqueid)
                        throw new ApiError(CANCELED, "The answer belongs to another request");
                    resolve(answer);
                } catch (error) {
                    reject(error);
                }
            },
            onFailure: (code, text) => reject(new ApiError(code, text)),
        });
    });
}

export interface Listener {
    onNotification(envelope: Envelope): void;
    /** Notifications were dropped: what is known may be out of date. */
    onGap(): void;
    /** Nothing comes any more; the listener may subscribe again. */
    onEnd(error: ApiError): void;
}

/** Subscribes; returns a function that ends it, after which the listener hears nothing. */
export function listen(channel: Channel, envelope: Envelope, listener: Listener): () => void {
    const id = channel.query({
        request: JSON.stringify(envelope),
        persistent: true,
        onSuccess(text) {
            const news = parseEnvelope(text);
            if ("resync" in news) listener.onGap();
            else listener.onNotification(news);
        },
        onFailure: (code, text) => listener.onEnd(new ApiError(code, text)),
    });
    return () => channel.cancel(id);
}
