// Texts for values, times and ages.

const UNKNOWN = "—";
const SECOND = 1000;
const MINUTE = 60 * SECOND;
const HOUR = 60 * MINUTE;
const DAY = 24 * HOUR;

const LEAST_FLOAT_DIGITS = 6; ///< that /api/v1/values writes without an exponent

/** A float with the digits of /api/v1/values: "0.1", "1e+10", "1e-07".
 * @param {number} number */
function floatText(number) {
    const [digits, exponent] = number.toExponential().split("e");
    const power = Number(exponent);
    const mostPower = Math.max(LEAST_FLOAT_DIGITS, digits.replace(/[-.]/g, "").length);
    if (power >= -4 && power < mostPower) return String(number);
    return `${digits}e${power < 0 ? "-" : "+"}${twoDigits(Math.abs(power))}`;
}

/** A value with the text that /api/v1/values has for it, bits as 0 and 1; a dash for what was never
 * read.
 * @param {number|boolean|string|null|undefined} value
 * @param {string} [type]  of the tag */
export function valueText(value, type) {
    if (value === null || value === undefined) return UNKNOWN;
    if (typeof value === "boolean") return value ? "1" : "0";
    if (typeof value === "number" && type?.startsWith("float")) return floatText(value);
    return Object.is(value, -0) ? "-0" : String(value);
}

/** A value as a number for a plot; NaN for what has none.
 * @param {number|boolean|string|null|undefined} value */
export function valueNumber(value) {
    if (typeof value === "boolean") return value ? 1 : 0;
    return typeof value === "number" ? value : NaN;
}

/** A span of time: "0 s", "75 s", "12 min", "3 h 20 min", "4 d 2 h".
 * @param {number} ms */
export function spanText(ms) {
    const span = Math.max(0, ms);
    if (span < 100 * SECOND) return `${Math.floor(span / SECOND)} s`;
    if (span < HOUR) return `${Math.floor(span / MINUTE)} min`;
    if (span < DAY) return twoUnits(span, HOUR, "h", MINUTE, "min");
    return twoUnits(span, DAY, "d", HOUR, "h");
}

function twoUnits(span, large, largeName, small, smallName) {
    const rest = Math.floor((span % large) / small);
    const text = `${Math.floor(span / large)} ${largeName}`;
    return rest > 0 ? `${text} ${rest} ${smallName}` : text;
}

/** The age of something; a dash when either time is unknown.
 * @param {number|null} time  ms since 1970, by the station's clock; 0 or null: never
 * @param {number|null} now   by the same clock */
export function ageText(time, now) {
    return time && now !== null ? spanText(now - time) : UNKNOWN;
}

function twoDigits(number) {
    return String(number).padStart(2, "0");
}

/** The time of day here, "14:03:05".
 * @param {number} time  ms since 1970 */
export function clockText(time) {
    const date = new Date(time);
    return [date.getHours(), date.getMinutes(), date.getSeconds()].map(twoDigits).join(":");
}

/** The day and time here, "2026-03-01 14:03:05".
 * @param {number} time  ms since 1970 */
export function dateText(time) {
    const date = new Date(time);
    const day = [date.getFullYear(), date.getMonth() + 1, date.getDate()].map(twoDigits).join("-");
    return `${day} ${clockText(time)}`;
}

/** The time of day with milliseconds, "14:03:05.120".
 * @param {number} time  ms since 1970 */
export function preciseClockText(time) {
    const rest = ((time % SECOND) + SECOND) % SECOND;
    return `${clockText(time)}.${String(Math.floor(rest)).padStart(3, "0")}`;
}

/** A number with digits in groups: "12 345".
 * @param {number} number */
export function countText(number) {
    return String(number).replace(/\B(?=(\d{3})+(?!\d))/g, "\u202f");
}

/** A share of 0 to 1 as "42 %".
 * @param {number|null|undefined} share */
export function shareText(share) {
    return typeof share === "number" ? `${(share * 100).toFixed(1)} %` : UNKNOWN;
}

/** Milliseconds as "1.25 ms".
 * @param {number|null|undefined} ms */
export function msText(ms) {
    if (typeof ms !== "number") return UNKNOWN;
    return `${ms >= 100 ? Math.round(ms) : Number(ms.toPrecision(3))} ms`;
}
