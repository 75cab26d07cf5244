// Entry of cefquery.js, which the server's page loads before everything else. In the container the functions are
// there already, and this does nothing.
import { install, Queries } from "./cefquery.js";
import { Socket } from "./socket.js";

if (typeof (window as { cefQuery?: unknown }).cefQuery !== "function") {
    const scheme = location.protocol === "https:" ? "wss:" : "ws:";
    const socket = new Socket(`${scheme}//${location.host}/socket`, {
        onReady({ host, version }) {
            Object.defineProperty(window, "galleryHost", {
                value: Object.freeze({ methods: Object.freeze(host), version }),
                configurable: true, // another start of the server may offer something else
            });
            // Before the queries that wait, so that a page can ask the host first.
            window.dispatchEvent(new Event("gallery-host-ready"));
            queries.onReady();
        },
        onFrame: (text) => queries.onFrame(text),
        onLost: () => queries.onLost(),
        onRefused: (code, text) => queries.onRefused(code, text),
    });
    const queries = new Queries(socket);
    install(window, queries);
    socket.connect();
}
