// The line that tells how the station stands with its broker. A station without one has no line.
import { byId, make, setAttribute, setText } from "./dom.js";
import { dateText } from "./format.js";
import { getJson } from "./station.js";

/** As /api/v1/plant has it.
 * @typedef {{dialect: string, state: "pausing"|"connecting"|"connected", server: string,
 *     since: number, trouble: string|null, behind: number|null, dropped: number|null}} BrokerStanding */

/** @param {BrokerStanding} standing */
function sentence(standing) {
    const parts = [`${standing.dialect}: ${standing.state}`];
    if (standing.server) parts.push(standing.server);
    if (standing.since) parts.push(`since ${dateText(standing.since)}`);
    if (standing.behind !== null)
        parts.push(`behind by ${standing.behind}`, `dropped ${standing.dropped}`);
    if (standing.trouble) parts.push(standing.trouble);
    return parts.join(", ");
}

export class BrokerLine {
    constructor() {
        /** What the stream told last.
         * @type {BrokerStanding[]|null} */
        this.told = null;
    }

    /** Begins anew: a reload or a restart may have given the station a broker, or taken it. */
    async start() {
        const { told } = this;
        try {
            const standings = await getJson("plant");
            if (this.told === told) this.show(standings); // else the stream was faster
        } catch {
            // The stream tells that the station is gone.
        }
    }

    /** @param {BrokerStanding[]|null} standings  what the stream told */
    update(standings) {
        if (standings === null || standings === this.told) return;
        this.told = standings;
        this.show(standings);
    }

    /** @param {BrokerStanding[]} standings */
    show(standings) {
        const line = byId("broker-line");
        line.hidden = standings.length === 0;
        while (line.children.length > standings.length) line.lastElementChild.remove();
        while (line.children.length < standings.length) line.append(make("span.broker"));
        standings.forEach((standing, at) => {
            const shown = line.children[at];
            setAttribute(shown, "data-broker", standing.dialect);
            setAttribute(shown, "data-state", standing.state);
            setText(shown, sentence(standing));
        });
    }
}
