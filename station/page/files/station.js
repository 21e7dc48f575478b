// Requests to the station's API.

const API = "/api/v1/";

/** An answer that is no success. `status` is 0 when there was no answer at all. */
export class StationError extends Error {
    /** @param {number} status
     * @param {string} message */
    constructor(status, message) {
        super(message);
        this.status = status;
    }
}

/** Goes to the login page when the station asks for a token.
 * @param {number} status */
export function leaveWhenLoggedOut(status) {
    if (status === 401) window.location.replace("/login.html");
}

/** The path of a request with its query; keys without a value are left out.
 * @param {string} path
 * @param {Object<string, any>} [query] */
export function apiPath(path, query = {}) {
    const given = Object.entries(query).filter(([, value]) => value !== undefined);
    const text = new URLSearchParams(given).toString();
    return API + path + (text ? `?${text}` : "");
}

async function request(path, options) {
    let response;
    try {
        response = await fetch(path, { credentials: "same-origin", cache: "no-store", ...options });
    } catch (error) {
        throw new StationError(0, "the station does not answer");
    }
    leaveWhenLoggedOut(response.status);
    const text = await response.text().catch(() => {
        throw new StationError(0, "the answer broke off");
    });
    if (response.ok) return text;
    throw new StationError(response.status, sentenceOf(text, response.status));
}

function sentenceOf(text, status) {
    try {
        return String(JSON.parse(text).error ?? `status ${status}`);
    } catch {
        return `status ${status}`;
    }
}

/** @param {string} path
 * @param {Object<string, any>} [query]
 * @param {AbortSignal} [signal]
 * @throws {StationError} */
export async function getJson(path, query, signal) {
    return JSON.parse(await request(apiPath(path, query), { signal }));
}

/** @param {string} path
 * @param {any} body
 * @throws {StationError} */
export async function postJson(path, body) {
    return JSON.parse(await request(API + path, {
        method: "POST",
        headers: { "Content-Type": "application/json", "X-Kakb": "1" },
        body: JSON.stringify(body),
    }));
}
