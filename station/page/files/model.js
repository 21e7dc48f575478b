// What the station told: values, events, its clock. The views read it.
import { valueNumber } from "./format.js";

const MOST_EVENTS = 1000;
const MOST_FRAMES = 1000;

/** A tag as /api/v1/values has it.
 * @typedef {{link: string, tag: string, station: number, address: string, type: string,
 *     value: number|boolean|string|null, quality: "good"|"stale"|"bad", time: number|null,
 *     changed: number|null, trouble: string|null, writable: boolean}} TagValue */

/** Something that happened once.
 * @typedef {{kind: "link"|"write"|"recipe", id: string, time: number, document: any}} PastEvent */

/** The key of a tag in maps. A link's name has no line break.
 * @param {string} link
 * @param {string} tag */
export function tagKey(link, tag) {
    return `${link}\n${tag}`;
}

export class Model {
    constructor() {
        /** @type {Map<string, TagValue>} */
        this.values = new Map();
        /** @type {PastEvent[]} */
        this.events = [];
        this.startFrames(null); // `frames`: the newest ones of `framesLink`, oldest first
        this.lastEventId = "0";
        /** The document of /api/v1/station. */
        this.station = null;
        /** The station's clock at the last beat.
         * @type {{time: number, at: number}|null} */
        this.beat = null;
        /** How the station stands with its broker, as the stream told it last.
         * @type {import("./brokerLine.js").BrokerStanding[]|null} */
        this.standings = null;
        /** Grows when tags came or went. */
        this.shape = 0;
        /** Grows with all values at once: the configuration may be another one. */
        this.fullCount = 0;
        this.changed = new Set(); // keys, until takeChanges()
        /** @type {((change: TagValue) => void)[]} */
        this.valueListeners = [];
        /** @type {((event: PastEvent) => void)[]} */
        this.eventListeners = [];
    }

    /** The station's clock now, in ms since 1970; null: not known yet.
     * @param {number} [steady] */
    stationNow(steady = performance.now()) {
        return this.beat ? this.beat.time + (steady - this.beat.at) : null;
    }

    /** The keys of the tags that changed since the last call. */
    takeChanges() {
        const changed = this.changed;
        this.changed = new Set();
        return changed;
    }

    /** The names of the links, in the order of the station. */
    linkNames() {
        if (this.station) return this.station.links.map((link) => link.name);
        return [...new Set([...this.values.values()].map((value) => value.link))];
    }

    /** @param {string} link
     * @param {string} tag */
    find(link, tag) {
        return this.values.get(tagKey(link, tag));
    }

    /** Applies a message of the stream.
     * @param {import("./eventConnection.js").StreamMessage} message
     * @param {number} steady  performance.now() */
    apply(message, steady) {
        if (message.id) this.lastEventId = message.id;
        switch (message.event) {
        case "values":
            return message.data.full ? this.replace(message.data.values)
                : this.change(message.data.values);
        case "beat":
            return this.takeBeat(message.data, steady);
        case "frame":
            return this.takeFrames(message.data);
        case "plant":
            this.standings = message.data;
            return;
        case "link":
        case "write":
        case "recipe":
            return this.takeEvent(message.event, message.id, message.data);
        }
    }

    replace(values) {
        ++this.fullCount;
        const before = [...this.values.keys()].join("\0");
        this.values = new Map(values.map((value) => [tagKey(value.link, value.tag), value]));
        if ([...this.values.keys()].join("\0") !== before) ++this.shape;
        for (const value of values) this.tellChange(value);
    }

    change(values) {
        for (const change of values) {
            const known = this.find(change.link, change.tag);
            if (known) this.tellChange(Object.assign(known, change));
        }
    }

    tellChange(value) {
        this.changed.add(tagKey(value.link, value.tag));
        for (const listener of this.valueListeners) listener(value);
    }

    takeBeat(beat, steady) {
        this.beat = { time: beat.time, at: steady };
        for (const [link, tag, time] of beat.seen) {
            const known = this.find(link, tag);
            if (!known) continue;
            known.time = time;
            this.changed.add(tagKey(link, tag));
        }
    }

    takeEvent(kind, id, document) {
        if (id && this.events.some((event) => event.id === id)) return;
        const time = document.time ?? document.since ?? this.stationNow() ?? Date.now();
        const event = { kind, id, time, document };
        this.events.push(event);
        if (this.events.length > MOST_EVENTS) this.events.shift();
        for (const listener of this.eventListeners) listener(event);
    }

    /** A jump of the numbers tells how many frames the stream left out. */
    takeFrames(data) {
        if (this.framesLink !== data.link) this.startFrames(data.link);
        const skipped = this.nextFrame === null ? 0 : data.first - this.nextFrame;
        if (skipped > 0) this.addFrames([{ skipped }]);
        this.addFrames(data.frames);
        this.nextFrame = data.first + data.frames.length;
    }

    /** Forgets the frames of the link before.
     * @param {string|null} link */
    startFrames(link) {
        this.framesLink = link;
        this.frames = [];
        this.framesTaken = 0;
        this.nextFrame = null;
    }

    addFrames(frames) {
        this.frames.push(...frames);
        this.framesTaken += frames.length;
        if (this.frames.length > MOST_FRAMES)
            this.frames.splice(0, this.frames.length - MOST_FRAMES);
    }

    /** All that another tab needs to go on from here.
     * @param {number} steady */
    snapshot(steady) {
        return {
            values: [...this.values.values()], events: this.events, lastEventId: this.lastEventId,
            time: this.stationNow(steady),
        };
    }

    takeSnapshot(known, steady) {
        this.events = known.events;
        this.lastEventId = known.lastEventId;
        if (known.time !== null) this.beat = { time: known.time, at: steady };
        this.replace(known.values);
    }
}

/** The value for a plot: a number when it is good, else NaN.
 * @param {TagValue|undefined} value */
export function plottedNumber(value) {
    return value && value.quality === "good" ? valueNumber(value.value) : NaN;
}
