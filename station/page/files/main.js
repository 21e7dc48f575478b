// The page's frame: views, the stream's state, keys.
import { BrokerLine } from "./brokerLine.js";
import { byId, make, setAttribute, setText } from "./dom.js";
import { clockText } from "./format.js";
import { Model } from "./model.js";
import { SharedStream } from "./sharedStream.js";
import { getJson } from "./station.js";
import { ValuesView } from "./valuesView.js";

const TICK_TIME = 1000;
const VIEWS = ["values", "trends", "link", "recipes", "frames"];

const root = document.documentElement;
const model = new Model();
const stream = new SharedStream(model, onNews);
const surroundings = { model, stream, isLive: () => stream.isLive, announce };
const brokerLine = new BrokerLine();
const views = { values: new ValuesView(surroundings) };
let shownView = "";
let isFrameAsked = false;
let knownFullCount = 0; ///< the count of full values at the last reading of the station

/** Says something to those who hear the page. A new node is told even with the same text: the
 * second write of a tag ends as the first.
 * @param {string} text */
function announce(text) {
    byId("announcer").replaceChildren(make("span", { text }));
}

/** A page that turns live shows what is before it looks live. Else the screen's next frame will
 * do. */
function onNews() {
    if (stream.isLive && root.dataset.stream !== "live") views[shownView]?.update();
    showStream();
    brokerLine.update(model.standings);
    if (model.fullCount !== knownFullCount) readStation();
    if (isFrameAsked) return;
    isFrameAsked = true;
    requestAnimationFrame(() => {
        isFrameAsked = false;
        views[shownView]?.update();
    });
}

// The stream's state.

function showStream() {
    const isLive = stream.isLive;
    setAttribute(root, "data-stream", isLive ? "live" : "lost");
    setText(byId("stream-chip"), isLive ? "Live" : "No data");
    byId("lost-banner").hidden = isLive;
    if (isLive) return;
    const since = model.beat ? `No data since ${clockText(model.beat.time)}.` : "No data yet.";
    setText(byId("lost-banner"), `${since} What is shown is old. The page comes back by itself.`);
}

function showStation(station) {
    model.station = station;
    setText(byId("station-name"), station.name);
    document.title = station.name;
    setAttribute(root, "data-writes", station.writes ? "allowed" : "refused");
    setText(byId("writes-chip"), station.writes ? "Writes allowed" : "Read only");
    byId("writes-chip").title = station.writes
        ? "Tags with the access rw can be written."
        : "Nothing can be written: the station was started without --allow-writes.";
}

/** Links, the name and the leave to write change with a reload, which brings full values. */
async function readStation() {
    knownFullCount = model.fullCount;
    try {
        showStation(await getJson("station"));
        onNews();
        brokerLine.start();
    } catch {
        // The stream tells that the station is gone, and the next reading comes.
    }
}

// Views.

/** @param {string} name */
async function show(name) {
    if (!VIEWS.includes(name) || name === shownView) return;
    views[shownView]?.hide();
    shownView = name;
    for (const button of document.querySelectorAll("[data-view]"))
        setAttribute(button, "aria-current", button.dataset.view === name ? "page" : null);
    for (const view of VIEWS) byId(`${view}-view`).hidden = view !== name;
    window.history.replaceState(null, "", `#${name}`);
    try {
        views[name] ??= await loadView(name);
    } catch {
        readStation(); // leads to the login page when a token is asked for
        announce(`The view ${name} could not be loaded.`);
        return show("values");
    }
    if (shownView === name) views[name].show();
}

/** A view that is not needed at the start comes when it is first shown. */
async function loadView(name) {
    const module = await import(`./${name}View.js`);
    return new module.View(surroundings);
}

// Keys.

function isTyping(target) {
    return target instanceof HTMLElement
        && (target.matches("input, select, textarea") || target.isContentEditable);
}

function onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey || isTyping(event.target)) return;
    if (document.querySelector("dialog[open]")) return;
    const number = "12345".indexOf(event.key);
    if (event.key.length === 1 && number >= 0) show(VIEWS[number]);
    else if (event.key === "?") byId("help-dialog").showModal();
    else if (event.key === "/") views[shownView]?.focusFilter?.();
    else if (!views[shownView]?.key?.(event.key)) return;
    event.preventDefault();
}

// Begin.

for (const button of document.querySelectorAll("[data-view]"))
    button.addEventListener("click", () => show(button.dataset.view));
byId("help-button").addEventListener("click", () => byId("help-dialog").showModal());
document.addEventListener("keydown", onKey);
window.addEventListener("hashchange", () => show(window.location.hash.slice(1)));

// A frozen tab and one that the browser keeps for "back" are not live when they are seen again.
document.addEventListener("freeze", () => stream.putAside());
document.addEventListener("resume", () => stream.start());
window.addEventListener("pagehide", () => stream.putAside());
window.addEventListener("pageshow", (event) => {
    if (event.persisted) stream.start();
});
document.addEventListener("visibilitychange", () => stream.look());

model.eventListeners.push((event) => {
    if (event.kind === "link") readStation();
});
setInterval(() => {
    if (!document.hidden) views[shownView]?.tick?.();
}, TICK_TIME);
stream.start();
readStation();
const asked = window.location.hash.slice(1);
show(VIEWS.includes(asked) ? asked : "values");
