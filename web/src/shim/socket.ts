// The connection to the page's server: authenticates, and connects again for as long as the page is open.
import type { Carrier } from "./cefquery.js";

export interface Ready {
    methods: string[];
    host: string[];
    version: string;
}

export interface SocketHandlers {
    onReady(ready: Ready): void;
    onFrame(text: string): void;
    onLost(): void;
    onRefused(code: number, text: string): void;
}

/** Where the launch page leaves the token, and where another tab may leave a newer one. */
export const TOKEN_KEY = "socketToken";

const REFUSED = 4401;
const FIRST_DELAY_MS = 250;
const LAST_DELAY_MS = 8000;

export class Socket implements Carrier {
    ready = false;
    #socket: WebSocket | null = null;
    #token: string | null = null;
    #delay = FIRST_DELAY_MS;
    #timer: ReturnType<typeof setTimeout> | undefined;

    constructor(
        private readonly address: string,
        private readonly handlers: SocketHandlers,
    ) {
        // Somebody who looks at the page again, or whose network is back, does not wait for the next attempt.
        for (const event of ["online", "focus"]) window.addEventListener(event, () => this.#retryNow());
        window.addEventListener("storage", ({ key, newValue }) => {
            if (key === TOKEN_KEY && newValue !== null && newValue !== this.#token) this.connect();
        });
        // The page goes: its queries end without a word, as in the container.
        window.addEventListener("pagehide", () => this.#drop());
        window.addEventListener("pageshow", (event) => event.persisted && this.connect());
    }

    send(text: string): void {
        this.#socket?.send(text);
    }

    /** Connects, after the end of a connection that is still there. */
    connect(): void {
        this.#drop();
        this.handlers.onLost();
        const token = (this.#token = localStorage.getItem(TOKEN_KEY));
        if (!token) return this.handlers.onRefused(REFUSED, "The page has no token");
        const socket = new WebSocket(this.address);
        this.#socket = socket;
        socket.onopen = () => socket.send(JSON.stringify({ token }));
        socket.onmessage = ({ data }) => this.#onMessage(String(data));
        socket.onclose = ({ code, reason }) => this.#onClose(code, reason);
    }

    #onMessage(text: string): void {
        if (this.ready) return this.handlers.onFrame(text);
        const { methods = [], host = [], version = "" } = JSON.parse(text) as Partial<Ready>;
        this.ready = true;
        this.#delay = FIRST_DELAY_MS;
        this.handlers.onReady({ methods, host, version });
    }

    #onClose(code: number, reason: string): void {
        this.#drop();
        if (code === REFUSED) return this.handlers.onRefused(code, reason);
        this.handlers.onLost();
        this.#timer = setTimeout(() => this.connect(), this.#delay);
        this.#delay = Math.min(2 * this.#delay, LAST_DELAY_MS);
    }

    #retryNow(): void {
        if (this.#timer !== undefined) this.connect();
    }

    #drop(): void {
        clearTimeout(this.#timer);
        this.#timer = undefined;
        this.ready = false;
        if (!this.#socket) return;
        this.#socket.onopen = this.#socket.onmessage = this.#socket.onclose = null;
        this.#socket.close();
        this.#socket = null;
    }
}
