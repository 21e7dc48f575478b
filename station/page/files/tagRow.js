// The row of one tag: value, quality, age, and writing in place.
import { make, setAttribute, setText } from "./dom.js";
import { ageText, valueText } from "./format.js";
import { typedValue, writeTag } from "./tagWriting.js";

/** The news that a write was confirmed is taken away after so long. What went wrong stays. */
const CONFIRMED_TIME = 20000;

/** What all rows use.
 * @typedef {{model: import("./model.js").Model, isLive: () => boolean,
 *     announce: (text: string) => void}} RowSurroundings */

export class TagRow {
    /** @param {import("./model.js").TagValue} value
     * @param {RowSurroundings} surroundings */
    constructor(value, surroundings) {
        this.surroundings = surroundings;
        this.link = value.link;
        this.tag = value.tag;
        this.isBit = value.type === "bool";
        const hooks = { "data-link": value.link, "data-tag": value.tag };
        this.trouble = make("span.trouble");
        this.outcome = make("span.outcome");
        this.value = make("td.value", hooks);
        this.quality = make("b.quality");
        this.age = make("td.age");
        this.write = make("td.write");
        this.element = make("tr", hooks, [
            make("th", { scope: "row" }, [
                make("span.name", { text: value.tag }),
                make("span.place", {
                    text: `${value.station}:${value.address} · ${value.type}`,
                }),
                this.trouble, this.outcome,
            ]),
            this.value, make("td.quality-cell", {}, [this.quality]), this.age, this.write,
        ]);
        this.isWritable = null;
        this.update(value);
    }

    /** Shows what is known now.
     * @param {import("./model.js").TagValue} value */
    update(value) {
        // Without a value the cell is empty, and the style shows a dash.
        setText(this.value, value.value === null ? "" : valueText(value.value, value.type));
        setAttribute(this.value, "data-quality", value.quality);
        setText(this.quality, value.quality);
        setAttribute(this.quality, "data-word", value.quality);
        setText(this.trouble, value.trouble ?? "");
        if (this.isWritable !== value.writable) this.makeControls(value.writable);
        this.updateSwitch(value);
        this.updateAge(value);
    }

    /** @param {import("./model.js").TagValue} value */
    updateAge(value) {
        setText(this.age, ageText(value.time, this.surroundings.model.stationNow()));
    }

    /** The switch shows what is. A click asks for the opposite, and changes nothing here. */
    updateSwitch(value) {
        if (!this.switch) return;
        const isKnown = value.value !== null;
        const isOn = Number(value.value) === 1;
        setAttribute(this.switch, "aria-checked", isKnown ? String(isOn) : "mixed");
        this.switch.disabled = !isKnown;
    }

    get current() {
        return this.surroundings.model.find(this.link, this.tag);
    }

    // Writing.

    makeControls(isWritable) {
        this.isWritable = isWritable;
        this.switch = null;
        if (!isWritable) {
            this.write.replaceChildren(make("span.muted", { text: "read only" }));
            return;
        }
        const controls = [];
        if (this.isBit) {
            this.switch = make("button.switch", {
                type: "button", role: "switch", "data-switch": true, "aria-label": this.tag,
                onclick: () => this.send(Number(this.current.value) !== 1),
            });
            controls.push(this.switch);
        }
        this.edit = make("button", {
            type: "button", "data-edit": true, "aria-label": `Write ${this.tag}`, text: "Write",
            onclick: () => this.startEditing(),
        });
        this.write.replaceChildren(...controls, this.edit);
    }

    startEditing() {
        const { value = null, type } = this.current ?? {};
        this.input = make("input", {
            "data-input": true, "aria-label": `New value of ${this.tag}`, autocomplete: "off",
            inputmode: "decimal", enterkeyhint: "send", spellcheck: "false",
            onkeydown: (event) => this.editorKey(event),
        });
        this.input.value = value === null ? "" : valueText(value, type);
        const send = make("button.primary", {
            type: "button", "data-send": true, text: "Send", onclick: () => this.sendTyped(),
        });
        const cancel = make("button.icon", {
            type: "button", "aria-label": "Cancel", text: "✕", onclick: () => this.stopEditing(),
        });
        this.write.replaceChildren(make("span.editor", {}, [this.input, send, cancel]));
        this.tell(null);
        this.input.focus();
        this.input.select();
    }

    editorKey(event) {
        if (event.key === "Enter") this.sendTyped();
        else if (event.key === "Escape") this.stopEditing();
        else return;
        event.preventDefault();
    }

    stopEditing() {
        this.makeControls(this.isWritable);
        if (this.current) this.updateSwitch(this.current);
        this.edit.focus();
    }

    sendTyped() {
        const value = typedValue(this.input.value);
        if (value === null) {
            setAttribute(this.input, "aria-invalid", "true");
            this.tell({ outcome: "refused", text: `refused: "${this.input.value}" is no number` });
            this.input.select();
            return;
        }
        this.stopEditing();
        this.send(value);
    }

    /** @param {number|boolean} value */
    send(value) {
        if (!this.surroundings.isLive())
            return this.tell({ outcome: "failed", text: "failed: the page has no data, not sent" });
        const number = this.writeNumber = (this.writeNumber ?? 0) + 1;
        writeTag(this.current, value, (telling) => {
            if (number === this.writeNumber) this.tell(telling); // the newest write counts
        });
    }

    /** @param {import("./tagWriting.js").WriteTelling|null} telling */
    tell(telling) {
        setAttribute(this.outcome, "data-outcome", telling?.outcome);
        setText(this.outcome, telling?.text ?? "");
        clearTimeout(this.forgetting);
        if (telling?.outcome === "confirmed")
            this.forgetting = setTimeout(() => this.tell(null), CONFIRMED_TIME);
        if (telling && telling.outcome !== "waiting")
            this.surroundings.announce(`${this.tag} ${telling.text}`);
    }
}
