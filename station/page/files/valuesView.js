// All tags with their values, grouped by link.
import { byId, make, setAttribute, setText } from "./dom.js";
import { valueNumber } from "./format.js";
import { tagKey } from "./model.js";
import { TagRow } from "./tagRow.js";

/** The columns, and the order of two tags by each. */
const COLUMNS = [
    { name: "Tag", order: (a, b) => textOrder(a.tag, b.tag) },
    { name: "Value", order: (a, b) => valueOrder(a, b) },
    { name: "Quality", order: (a, b) => qualityRank(a) - qualityRank(b) },
    { name: "Age", order: (a, b) => (b.time ?? 0) - (a.time ?? 0) },
    { name: "Write", order: null },
];
const QUALITIES = ["bad", "stale", "good"];
const { compare: textOrder } = new Intl.Collator("en", { numeric: true });

function qualityRank(value) {
    return QUALITIES.indexOf(value.quality);
}

/** Values that are no numbers come last. */
function valueOrder(a, b) {
    const [left, right] = [valueNumber(a.value), valueNumber(b.value)];
    if (Number.isNaN(left) || Number.isNaN(right)) return Number.isNaN(left) - Number.isNaN(right);
    return left - right;
}

/** Whether each word of the filter is in a text of the tag. */
function matches(value, words) {
    const text = [value.tag, value.link, `${value.station}:${value.address}`, value.type,
        value.quality, value.trouble ?? ""].join("\n").toLowerCase();
    return words.every((word) => text.includes(word));
}

export class ValuesView {
    /** @param {import("./tagRow.js").RowSurroundings} surroundings */
    constructor(surroundings) {
        this.surroundings = surroundings;
        this.model = surroundings.model;
        this.rows = new Map();
        this.shape = -1;
        this.sorting = { column: -1, isDown: false }; // -1: the order of the tag file
        this.filter = byId("values-filter");
        this.filter.addEventListener("input", () => this.arrange());
    }

    focusFilter() {
        this.filter.focus();
    }

    show() {
        this.update();
    }

    hide() {}

    /** Shows the changes of the model. */
    update() {
        const changes = this.model.takeChanges();
        if (this.shape !== this.model.shape) return this.rebuild();
        for (const key of changes) {
            const value = this.model.values.get(key);
            if (value) this.rows.get(key)?.update(value);
        }
        if (this.filter.value.trim() && changes.size > 0) this.arrangeSoon();
        else this.count();
    }

    /** The ages run. */
    tick() {
        for (const [key, row] of this.rows) row.updateAge(this.model.values.get(key));
    }

    /** Tags came or went. A row that stays keeps what is being typed into it. */
    rebuild() {
        this.shape = this.model.shape;
        const before = this.rows;
        this.rows = new Map();
        for (const [key, value] of this.model.values) {
            const row = before.get(key) ?? new TagRow(value, this.surroundings);
            row.update(value);
            this.rows.set(key, row);
        }
        this.arrange();
    }

    arrangeSoon() {
        if (this.isArranging) return;
        this.isArranging = true;
        setTimeout(() => {
            this.isArranging = false;
            this.arrange();
        }, 500);
    }

    /** Puts the rows that the filter lets through into the tables of their links. */
    arrange() {
        const words = this.filter.value.toLowerCase().split(/\s+/).filter(Boolean);
        const shown = [...this.model.values.values()].filter((value) => matches(value, words));
        const { column, isDown } = this.sorting;
        if (column >= 0) shown.sort(COLUMNS[column].order);
        if (isDown) shown.reverse();
        const byLink = new Map();
        for (const value of shown) {
            if (!byLink.has(value.link)) byLink.set(value.link, []);
            byLink.get(value.link).push(value);
        }
        this.place([...byLink]);
        this.shown = shown.length;
        this.count();
    }

    /** @param {[string, import("./model.js").TagValue[]][]} groups */
    place(groups) {
        const active = document.activeElement;
        const list = byId("values-list");
        const sorts = () => [...list.querySelectorAll(".sort")];
        const sortAt = sorts().indexOf(active); // the heads are made anew
        const rowOf = (value) => this.rows.get(tagKey(value.link, value.tag)).element;
        const tables = groups.map(([link, values]) => make("table.values", {}, [
            make("caption", { text: link }), this.head(), make("tbody", {}, values.map(rowOf)),
        ]));
        const none = make("p.empty", {
            text: this.model.values.size > 0 ? "No tag matches the filter." : "No tags yet.",
        });
        list.replaceChildren(...(tables.length > 0 ? tables : [none]));
        if (sortAt >= 0) sorts()[sortAt]?.focus();
        else if (active?.isConnected && active !== document.body) active.focus();
    }

    head() {
        const cells = COLUMNS.map((column, i) => this.headCell(column, i));
        return make("thead", {}, [make("tr", {}, cells)]);
    }

    headCell(column, index) {
        if (!column.order) return make("th", { scope: "col", text: column.name });
        const isSorted = this.sorting.column === index;
        const sort = make("button.sort", {
            type: "button", text: column.name, onclick: () => this.sortBy(index),
        });
        const direction = this.sorting.isDown ? "descending" : "ascending";
        return make("th", { scope: "col", "aria-sort": isSorted ? direction : null }, [sort]);
    }

    /** The first click sorts up, the second down, the third as the tag file has it. */
    sortBy(column) {
        if (this.sorting.column !== column) this.sorting = { column, isDown: false };
        else if (!this.sorting.isDown) this.sorting.isDown = true;
        else this.sorting = { column: -1, isDown: false };
        this.arrange();
    }

    count() {
        const values = [...this.model.values.values()];
        const amount = (quality) => values.filter((value) => value.quality === quality).length;
        const troubles = ["stale", "bad"].filter((quality) => amount(quality) > 0)
            .map((quality) => `${amount(quality)} ${quality}`);
        const all = this.shown === values.length ? `${values.length} tags`
            : `${this.shown} of ${values.length} tags`;
        setText(byId("values-count"), [all, ...troubles].join(", "));
        setAttribute(byId("values-count"), "data-trouble", troubles.length > 0);
    }
}
