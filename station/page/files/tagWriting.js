// A write of one tag, from the wish to its outcome.
import { valueText } from "./format.js";
import { StationError, postJson } from "./station.js";

/** @typedef {"waiting"|"confirmed"|"refused"|"failed"} Outcome */
/** What a row tells about its newest write.
 * @typedef {{outcome: Outcome, text: string}} WriteTelling */

/** The value that a person typed, as the API takes it: a number, or true and false.
 * @param {string} typed
 * @returns {number|boolean|null} null: it is no value */
export function typedValue(typed) {
    const text = typed.trim().toLowerCase();
    if (text === "true" || text === "on") return true;
    if (text === "false" || text === "off") return false;
    const isNumber = /^[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?$/.test(text);
    if (!isNumber && !/^0x[0-9a-f]+$/.test(text) && !/^0b[01]+$/.test(text)) return null;
    const number = Number(text);
    return Number.isFinite(number) ? number : null;
}

/** Writes a tag, and tells how it stands: once at once and once at the end.
 * @param {import("./model.js").TagValue} tag
 * @param {number|boolean} value
 * @param {(telling: WriteTelling) => void} tell */
export async function writeTag(tag, value, tell) {
    tell({ outcome: "waiting", text: `waiting for ${valueText(value, tag.type)}` });
    try {
        const end = await postJson("write", { link: tag.link, tag: tag.tag, value });
        tell(endTelling(end, tag.type));
    } catch (error) {
        tell(errorTelling(error, tag));
    }
}

function endTelling(end, type) {
    if (end.outcome === "confirmed")
        return { outcome: "confirmed", text: "confirmed" };
    const back = `rolled back to ${valueText(end.value, type)}`;
    return { outcome: end.outcome, text: `${end.outcome}: ${end.reason}, ${back}` };
}

/** The station itself refuses what it answers with an error. Without an answer, nobody knows. */
function errorTelling(error, tag) {
    if (!(error instanceof StationError)) throw error;
    if (error.status === 0)
        return {
            outcome: "failed",
            text: `failed: ${error.message}; the PLC may have executed the write`,
        };
    return {
        outcome: "refused",
        text: `refused: ${error.message}, rolled back to ${valueText(tag.value, tag.type)}`,
    };
}
