// The requests and notifications of the gallery, typed.
import { makeEnvelope, payloadOf, PERSISTENT, type ApiError } from "./envelope.js";
import { ask, listen, type Channel } from "./query.js";
import type { Notifications, Requests } from "./types.js";

/** The host's own methods; which of them a host offers is in `HostInfo`. */
export interface HostRequests {
    Preferences: { preferences?: object };
    OpenFolder: { file: string };
    OpenInPlayer: { file: string };
    /** Moves files into the trash; answered with `HostAnswer`. */
    Trash: { files: readonly string[] };
    /** Takes files that `Trash` was asked for out of it again; answered with `HostAnswer`. */
    Restore: { files: readonly string[] };
}

/** What became of each file. */
export interface HostAnswer {
    readonly files?: readonly { file: string; _return_code: number; _return_status: string }[];
}

/** Dispatched on the window when the server has said what it offers, before queries that wait are sent. */
export const HOST_READY = "gallery-host-ready";

/** What the server that shows the page offers beyond the gallery. The container offers nothing. */
export interface HostInfo {
    readonly methods: readonly string[];
    readonly version: string;
}

type Parameters<M extends keyof Requests> = Requests[M]["parameters"];
type Response<M extends keyof Requests> = Requests[M]["response"];
type News<N extends keyof Notifications> = Notifications[N]["response"];

export interface NewsListener<N extends keyof Notifications> {
    onNews(news: News<N>): void;
    onGap(): void;
    onEnd(error: ApiError): void;
}

export class Client {
    // Of `follow`, by the name of the notification.
    readonly #followed = new Map<string, Set<(news: never) => void>>();

    constructor(
        private readonly channel: Channel,
        private readonly hostInfo: () => HostInfo | null,
    ) {}

    /** Resolves with the payload of a successful answer, else rejects with ApiError. */
    async request<M extends keyof Requests>(method: M, parameters: Parameters<M>): Promise<Response<M>> {
        return payloadOf(await ask(this.channel, makeEnvelope("Gallery", method, parameters))) as Response<M>;
    }

    subscribe<N extends keyof Notifications>(method: N, listener: NewsListener<N>): () => void {
        return listen(this.channel, makeEnvelope("Gallery", method, {}, PERSISTENT), {
            onNotification: (envelope) => listener.onNews(envelope.payload as News<N>),
            onGap: () => listener.onGap(),
            onEnd: (error) => listener.onEnd(error),
        });
    }

    /**
     * Calls `onNews` with each notification of this name until the function that it returns is called. All who follow
     * one share a subscription, because a server keeps every one for as long as the page is open. After
     * the connection was lost nothing comes to those who followed before.
     */
    follow<N extends keyof Notifications>(method: N, onNews: (news: News<N>) => void): () => void {
        const known = this.#followed.get(method);
        const followers = known ?? new Set();
        followers.add(onNews);
        if (!known) {
            this.#followed.set(method, followers);
            this.subscribe(method, {
                onNews: (news) => followers.forEach((follower) => (follower as typeof onNews)(news)),
                onGap: () => {},
                onEnd: () => this.#followed.delete(method),
            });
        }
        return () => followers.delete(onNews);
    }

    /** What the host keeps of how somebody likes to see the gallery; `preferences` take its place. */
    async preferences(parameters: HostRequests["Preferences"]): Promise<Record<string, unknown>> {
        const answer = await ask(this.channel, makeEnvelope("Host", "Preferences", parameters));
        return (payloadOf(answer) as { preferences?: Record<string, unknown> }).preferences ?? {};
    }

    offers(method: keyof HostRequests): boolean {
        return this.hostInfo()?.methods.includes(method) ?? false;
    }

    async askHost<M extends keyof HostRequests>(method: M, parameters: HostRequests[M]): Promise<HostAnswer> {
        return payloadOf(await ask(this.channel, makeEnvelope("Host", method, parameters)));
    }
}
