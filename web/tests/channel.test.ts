// The road of a request: client, query, shim, and what a server answers.
import assert from "node:assert/strict";
import { test } from "node:test";
import { Client } from "../src/api/client.js";
import { ApiError } from "../src/api/envelope.js";
import { channelOf, type Query } from "../src/api/query.js";
import { install, Queries } from "../src/shim/cefquery.js";

interface Sent {
    method: string;
    uniqueid: string;
    type: number;
    module: string;
}

function connect(ready = true) {
    const sent: Sent[] = [];
    const carrier = { ready, send: (text: string) => void sent.push(JSON.parse(text) as Sent) };
    const queries = new Queries(carrier);
    const window: Record<string, (...given: unknown[]) => unknown> = {};
    install(window, queries);
    const answer = (to: number, frame: object) =>
        queries.onFrame(JSON.stringify({ reference_uniqueid: sent[to]!.uniqueid, ...frame }));
    return { sent, carrier, queries, window, answer, client: new Client(channelOf(window)!, () => null) };
}

const tick = () => new Promise((resolve) => setImmediate(resolve));
const canceled = [-1, "The query has been canceled"];

test("the functions refuse what the container refuses, and cannot be replaced", () => {
    const { window, sent } = connect();
    const single = /expecting a single object/;
    for (const given of [[], ["text"], [null], [{ request: "{}" }, 1]])
        assert.throws(() => window["cefQuery"]!(...given), single);
    const request = "{}";
    for (const wrong of [{}, { request: 1 }, { request, onSuccess: null }, { request, onFailure: 1 }])
        assert.throws(() => window["cefQuery"]!(wrong), /has to be a/);
    assert.throws(() => window["cefQuery"]!({ request: "{}", persistent: 1 }), /has to be a boolean/);
    for (const given of [[], [1, 2], ["1"], [1.5]])
        assert.throws(() => window["cefQueryCancel"]!(...given), /expecting a single integer/);
    assert.equal(sent.length, 0);
    assert.deepEqual(Object.keys(window), []);
    assert.throws(() => (window["cefQuery"] = () => 0));
    assert.throws(() => delete window["cefQueryCancel"]);
});

test("a query ends once: by its answer, a refusal, its cancellation or the loss of the connection", async () => {
    const { queries, sent, answer } = connect();
    const heard: unknown[][] = [];
    const query = (name: string, persistent = false) =>
        queries.query({
            request: JSON.stringify({ uniqueid: name }),
            persistent,
            onSuccess: (text: string) => heard.push([name, (JSON.parse(text) as { n?: number }).n]),
            onFailure: (...failure: unknown[]) => heard.push([name, ...failure]),
        } satisfies Query);
    const ids = ["answered", "refused", "dropped"].map((name) => query(name));
    ids.push(query("news", true), query("lost"), query("news 2", true));
    assert.deepEqual(ids, [1, 2, 3, 4, 5, 6]);
    assert.equal(queries.cancel(3), true);
    assert.deepEqual([queries.cancel(3), queries.cancel(0), queries.cancel(99)], [false, false, false]);
    for (const n of [1, 2]) answer(0, { n });
    answer(1, { error: { text: "too many" } });
    answer(2, { n: 3 });
    for (const n of [1, 2]) answer(3, { n });
    queries.onFrame('{"resync":true}');
    queries.onLost();
    answer(4, { n: 4 });
    assert.deepEqual(heard, [
        ["answered", 1],
        ["refused", -1, "too many"],
        ["news", 1],
        ["news", 2],
        ["news", undefined],
        ["news 2", undefined],
        ["news", ...canceled],
        ["lost", ...canceled],
        ["news 2", ...canceled],
    ]);
    assert.equal(sent.length, 6);
});

test("what cannot be answered fails, but never inside the call", async () => {
    const { queries } = connect();
    const heard: unknown[] = [];
    const onFailure = (...failure: unknown[]) => heard.push(failure);
    for (const request of ["no JSON", "{}", "null", '{"uniqueid":"a"}', '{"uniqueid":"a"}'])
        queries.query({ request, onFailure });
    assert.deepEqual(heard, []);
    await tick();
    assert.deepEqual(heard, Array(4).fill(canceled));
});

test("queries wait for a connection, and a page without a valid token hears so", async () => {
    const { carrier, queries, sent, client } = connect(false);
    const waiting = client.request("GetSettings", {});
    await tick();
    assert.equal(sent.length, 0);
    queries.onRefused(4401, "another start");
    const outdated = (error: unknown) => error instanceof ApiError && error.code === 4401;
    await assert.rejects(waiting, outdated);
    await assert.rejects(client.request("GetSettings", {}), outdated);
    carrier.ready = true;
    queries.onReady();
    void client.request("GetSettings", {}).catch(() => {});
    assert.equal(sent.length, 1);
});

test("one callback that throws leaves the others their answers", () => {
    const { queries } = connect();
    const reported: unknown[] = [];
    Object.assign(globalThis, { reportError: (error: unknown) => reported.push(error) });
    let heard = 0;
    const fail = () => {
        throw new Error("the page's");
    };
    queries.query({ request: '{"uniqueid":"1"}', onFailure: fail });
    queries.query({ request: '{"uniqueid":"2"}', onFailure: () => ++heard });
    queries.onLost();
    assert.deepEqual([heard, reported.length], [1, 1]);
});

test("the client pairs answers and notifications of a recorded session with what asked for them", async () => {
    const { sent, answer, client } = connect();
    const heard: unknown[] = [];
    const end = client.subscribe("GalleryNotifications", {
        onNews: ({ captureSaved }) => heard.push(captureSaved?.ugc?.path),
        onGap: () => heard.push("gap"),
        onEnd: ({ code }) => heard.push(code),
    });
    const settings = client.request("GetSettings", {});
    const nope = client.request("GetThumbnail", { file: "/a.png", width: 1, height: 1 });
    assert.deepEqual(
        sent.map(({ method, type, module }) => [method, type, module]),
        [
            ["GalleryNotifications", 3073, "Gallery"],
            ["GetSettings", 3072, "Gallery"],
            ["GetThumbnail", 3072, "Gallery"],
        ],
    );
    const saved = { captureSaved: { ugc: { path: "/g/Rally/x.png", fileType: "image" }, unannounced: true } };
    answer(0, { type: 3073, method: "GalleryNotifications", payload: { ...saved, _return_code: 0 } });
    answer(1, { type: 3072, method: "GetSettings", payload: { settings: { path: "/g" }, _return_code: 0 } });
    const text = "Could not find registered API for Nope";
    answer(2, { type: 3072, payload: { _return_code: -2147467263, _return_status: text } });
    assert.equal((await settings).settings.path, "/g");
    await assert.rejects(nope, new ApiError(-2147467263, text));
    end();
    answer(0, { payload: saved });
    assert.deepEqual(heard, ["/g/Rally/x.png"]);
});

test("all who follow a notification share one subscription, and a lost one is made anew", () => {
    const { sent, answer, queries, client } = connect();
    const heard: string[] = [];
    const follow = (name: string) =>
        client.follow("MontageNotification", ({ progress }) => heard.push(`${name}${progress}`));
    const end = follow("a");
    follow("b");
    answer(0, { payload: { progress: 1 } });
    end();
    answer(0, { payload: { progress: 2 } });
    follow("c");
    assert.deepEqual([heard, sent.length], [["a1", "b1", "b2"], 1]);
    queries.onLost();
    follow("d");
    answer(1, { payload: { progress: 3 } });
    assert.deepEqual([heard.slice(3), sent.length], [["d3"], 2]);
});
