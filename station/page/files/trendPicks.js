// Which tags the trends show. The choice stays in the browser.
import { byId, make } from "./dom.js";
import { tagKey } from "./model.js";

const PLACE = "kakb-trend-tags";
const FIRST_PICKS = 3;
const MOST_PICKS = 8;

/** @typedef {{link: string, tag: string}} Pick */

/** @returns {Pick[]|null} null: nothing was chosen in this browser */
function storedPicks() {
    try {
        const picks = JSON.parse(window.localStorage.getItem(PLACE) ?? "null");
        return Array.isArray(picks) ? picks : null;
    } catch {
        return null;
    }
}

export class TrendPicks {
    /** @param {import("./model.js").Model} model
     * @param {() => void} onChange */
    constructor(model, onChange) {
        this.model = model;
        this.onChange = onChange;
        this.picks = storedPicks();
        this.isWaiting = false; // for the first values
        byId("trends-pick").addEventListener("click", () => this.ask());
        byId("pick-filter").addEventListener("input", () => this.list());
    }

    /** The picked tags that there are. Without a choice, the first tags.
     * @returns {Pick[]} */
    chosen() {
        const values = [...this.model.values.values()];
        this.isWaiting = values.length === 0;
        const picks = this.picks ?? values.slice(0, FIRST_PICKS);
        return picks.filter(({ link, tag }) => this.model.find(link, tag))
            .map(({ link, tag }) => ({ link, tag }));
    }

    set(picks) {
        this.picks = picks;
        try {
            window.localStorage.setItem(PLACE, JSON.stringify(picks));
        } catch {
            // A browser that stores nothing forgets the choice.
        }
        this.onChange();
    }

    /** @param {Pick} pick */
    remove(pick) {
        this.set(this.chosen().filter(({ link, tag }) => link !== pick.link || tag !== pick.tag));
    }

    ask() {
        byId("pick-filter").value = "";
        this.list();
        byId("pick-dialog").showModal();
    }

    list() {
        const words = byId("pick-filter").value.toLowerCase().split(/\s+/).filter(Boolean);
        const chosen = new Set(this.chosen().map(({ link, tag }) => tagKey(link, tag)));
        const shown = [...this.model.values.values()].filter(({ link, tag }) =>
            words.every((word) => `${link}\n${tag}`.toLowerCase().includes(word)));
        byId("pick-list").replaceChildren(...shown.map((value) =>
            this.pickElement(value, chosen.has(tagKey(value.link, value.tag)))));
        this.limit();
    }

    pickElement({ link, tag }, isChosen) {
        const box = make("input", {
            type: "checkbox", checked: isChosen, "data-pick": tag,
            onchange: () => {
                if (box.checked) this.set([...this.chosen(), { link, tag }]);
                else this.remove({ link, tag });
                this.limit();
            },
        });
        return make("label", {}, [box, tag, make("span.muted", { text: link })]);
    }

    /** With the most tags picked, no other one can be. */
    limit() {
        const isFull = this.chosen().length >= MOST_PICKS;
        for (const box of byId("pick-list").querySelectorAll("input"))
            box.disabled = isFull && !box.checked;
    }
}
