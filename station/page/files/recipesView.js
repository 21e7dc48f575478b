// Recipes: load, edit, compare with the PLC, download, upload.
import { COLUMNS, recipeFile, recipeRows } from "./csv.js";
import { byId, fillSelect, headRow, make, saveFile, setAttribute, setText } from "./dom.js";
import { valueText } from "./format.js";
import { postJson } from "./station.js";
import { typedValue } from "./tagWriting.js";

const MOST_BODY = 64000; ///< bytes of a request that the station takes, less its own words
const READ_ONLY = "Off: the station was started without --allow-writes.";

/** @typedef {import("./csv.js").RecipeRow} RecipeRow */

/** The row as the API takes it.
 * @param {RecipeRow} row */
function rowDocument(row) {
    const { value, station, ...rest } = row;
    const typed = value.trim() === "" ? null : typedValue(value) ?? value;
    return { ...rest, station: Number(station), value: typed };
}

function endText(kind, end) {
    if (end.outcome === "failed")
        return `${kind} failed${end.block ? ` at ${end.block}` : ""}: ${end.reason}`;
    if (end.outcome === "differs") return `${kind}: ${end.differences.length} values differ.`;
    return kind === "Compare" ? "Compare: the PLC has these values." : `${kind} done.`;
}

export class View {
    /** @param {import("./tagRow.js").RowSurroundings} surroundings */
    constructor({ model, announce }) {
        this.model = model;
        this.announce = announce;
        /** @type {RecipeRow[]} */
        this.rows = [];
        this.isRunning = false;
        this.fileName = "recipe.csv";
        byId("recipe-file").addEventListener("change", (event) => this.load(event.target));
        byId("recipe-tags").addEventListener("click", () => this.takeTags());
        byId("recipe-add").addEventListener("click", () => this.addRow());
        byId("recipe-save").addEventListener("click", () => this.save());
        for (const kind of ["Compare", "Upload", "Download"])
            byId(`recipe-${kind.toLowerCase()}`).addEventListener("click", () => this.run(kind));
        model.eventListeners.push((event) => this.takeProgress(event));
        this.draw();
    }

    show() {
        this.update();
    }

    hide() {}

    update() {
        fillSelect(byId("recipe-link"), this.model.linkNames());
        const mayWrite = Boolean(this.model.station?.writes);
        const isIdle = !this.isRunning && this.rows.length > 0;
        byId("recipe-download").disabled = !isIdle || !mayWrite;
        byId("recipe-download").title = mayWrite ? "" : READ_ONLY;
        for (const name of ["compare", "upload", "save"])
            byId(`recipe-${name}`).disabled = !isIdle;
        if (!mayWrite && !byId("recipe-notice").textContent)
            this.tell("", `Download is off: nothing can be written on this station.`);
    }

    /** @param {""|"good"|"bad"} kind
     * @param {string} text */
    tell(kind, text) {
        setText(byId("recipe-notice"), text);
        setAttribute(byId("recipe-notice"), "data-kind", kind);
        if (text) this.announce(text);
    }

    // The rows.

    async load(input) {
        const [file] = input.files;
        if (!file) return;
        try {
            this.rows = recipeRows(await file.text());
            this.fileName = file.name;
            this.tell("", `${file.name}: ${this.rows.length} rows.`);
        } catch (error) {
            this.tell("bad", `${file.name}: ${error.message}`);
        }
        input.value = "";
        this.draw();
    }

    /** The writable tags of the link, with the values of now. */
    takeTags() {
        const link = byId("recipe-link").value;
        const tags = [...this.model.values.values()]
            .filter((tag) => tag.link === link && tag.writable);
        this.rows = tags.map((tag) => {
            const [, area, address] = /^([A-Z]+)(.*)$/.exec(tag.address) ?? ["", "", tag.address];
            return {
                name: tag.tag, station: String(tag.station), area, address, type: tag.type,
                value: tag.value === null ? "" : valueText(tag.value, tag.type),
            };
        });
        this.tell("", this.rows.length > 0 ? `${this.rows.length} tags that can be written.`
            : "The link has no tag that can be written.");
        this.draw();
    }

    addRow() {
        const last = this.rows[this.rows.length - 1];
        this.rows.push({
            name: "", station: last?.station ?? "1", area: last?.area ?? "MW", address: "",
            type: last?.type ?? "uint16", value: "",
        });
        this.draw();
        this.table.rows[this.table.rows.length - 1].querySelector("input").focus();
    }

    save() {
        saveFile(this.fileName, new Blob([recipeFile(this.rows)], { type: "text/csv" }));
    }

    draw(differences = []) {
        const head = [...COLUMNS.map((name) => name[0].toUpperCase() + name.slice(1)), ""];
        this.table = make("table.recipe", { "aria-label": "Recipe" }, [
            headRow(head),
            make("tbody", {}, this.rows.map((row, i) => this.rowElement(row, i))),
        ]);
        const none = make("p.empty", {
            text: "Open a recipe's file, take the link's tags, or add rows.",
        });
        byId("recipe-tables").replaceChildren(
            ...(differences.length > 0 ? [this.differenceTable(differences)] : []),
            this.rows.length > 0 ? this.table : none);
        this.update();
    }

    rowElement(row, index) {
        const cells = COLUMNS.map((name) => make("td", {}, [make("input", {
            "aria-label": `${name} of row ${index + 1}`, "data-column": name, value: row[name],
            spellcheck: "false", autocomplete: "off",
            oninput: (event) => { row[name] = event.target.value; },
        })]));
        const remove = make("button.icon", {
            type: "button", text: "✕", "aria-label": `Remove row ${index + 1}`,
            onclick: () => {
                this.rows.splice(index, 1);
                this.draw();
            },
        });
        return make("tr", {}, [...cells, make("td", {}, [remove])]);
    }

    differenceTable(differences) {
        return make("table.differences", { id: "recipe-differences" }, [
            make("caption", { text: "Differences" }), headRow(["Name", "Recipe", "PLC"]),
            make("tbody", {}, differences.map((difference) => this.differenceRow(difference))),
        ]);
    }

    differenceRow({ name, expected, found }) {
        const type = this.rows.find((row) => row.name === name)?.type;
        return make("tr", {}, [
            make("th", { scope: "row", text: name }),
            make("td", { text: valueText(expected, type) }),
            make("td", { text: valueText(found, type) }),
        ]);
    }

    // The work.

    /** @param {"Compare"|"Upload"|"Download"} kind */
    async run(kind) {
        const body = {
            link: byId("recipe-link").value, rows: this.rows.map(rowDocument),
            verify: byId("recipe-verify").checked,
        };
        if (new Blob([JSON.stringify(body)]).size > MOST_BODY)
            return this.tell("bad", "The recipe is longer than the station takes at once (64 kB).");
        const asking = document.activeElement; // a button is off while it works, and loses the focus
        this.isRunning = true;
        this.tell("", `${kind}…`);
        this.showProgress(0, 0);
        this.update();
        try {
            this.takeEnd(kind, await postJson(`recipes/${kind.toLowerCase()}`, body));
        } catch (error) {
            this.tell("bad", `${kind} failed: ${error.message}`);
        }
        this.isRunning = false;
        byId("recipe-progress").hidden = true;
        this.update();
        if (document.activeElement === document.body) asking?.focus();
    }

    takeEnd(kind, end) {
        if (kind === "Upload" && end.outcome === "done")
            end.rows.forEach(({ value }, i) => {
                this.rows[i].value = valueText(value, this.rows[i].type);
            });
        this.tell(end.outcome === "done" ? "good" : "bad", endText(kind, end));
        this.draw(end.differences ?? []);
    }

    showProgress(done, blocks) {
        byId("recipe-progress").hidden = false;
        const meter = byId("recipe-meter");
        if (blocks > 0) {
            meter.max = blocks;
            meter.value = done;
        } else {
            meter.removeAttribute("value");
        }
        setText(byId("recipe-step"), blocks > 0 ? `block ${done} of ${blocks}` : "");
    }

    takeProgress(event) {
        if (event.kind !== "recipe" || !this.isRunning) return;
        const { link, done, blocks } = event.document;
        if (link === byId("recipe-link").value && blocks) this.showProgress(done, blocks);
    }
}
