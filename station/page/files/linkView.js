// The state and the figures of each link, its stations, and the plan of its reads.
import { byId, headRow, make } from "./dom.js";
import { ageText, countText, dateText, msText, shareText } from "./format.js";
import { getJson } from "./station.js";

const READ_TIME = 2000;

const STATE_WORDS = { up: "good", opening: "stale", lost: "bad", answers: "good", silent: "bad" };

function stateWord(state) {
    return make("b.quality", { "data-word": STATE_WORDS[state] ?? "stale", text: state });
}

function table(caption, head, rows) {
    return make("table", {}, [
        make("caption", { text: caption }),
        headRow(head),
        make("tbody", {}, rows.map((cells) => make("tr", {}, cells.map((cell) =>
            make("td", {}, [cell]))))),
    ]);
}

function figures(link) {
    const shown = [
        ["Exchanges", countText(link.exchanges)], ["Retries", countText(link.retries)],
        ["Given up", countText(link.giveUps)], ["Refused", countText(link.refused)],
        ["Losses", countText(link.losses)], ["Reply, half within", msText(link.replyP50)],
        ["Reply, 99 % within", msText(link.replyP99)], ["Wire in use", shareText(link.wire)],
    ];
    return make("dl.figures", {}, shown.map(([name, text]) =>
        make("div", {}, [make("dt", { text: name }), make("dd", { text })])));
}

/** How long a cycle is, and what bounds it. */
function cycleText(plan) {
    if (plan.cycle === null) return "A cycle takes no time on the wire that could be planned.";
    return plan.bound === "pace"
        ? `A cycle begins every ${msText(plan.cycle)} at the earliest: the pace bounds it.`
        : `A cycle takes ${msText(plan.cycle)}: the line bounds it.`;
}

function amountText({ count, unit }) {
    return `${count} ${count === 1 ? unit.slice(0, -1) : unit}`;
}

function planRows(plan) {
    return plan.reads.map((read) => [
        String(read.station), read.first, amountText(read), read.rate, read.tags.join(", "),
    ]);
}

export class View {
    /** @param {{model: import("./model.js").Model}} surroundings */
    constructor({ model }) {
        this.model = model;
        this.plans = new Map(); // by link
        this.isShown = false;
        model.eventListeners.push((event) => {
            if (event.kind === "link") this.read();
        });
    }

    show() {
        this.isShown = true;
        this.plans.clear();
        this.read();
    }

    hide() {
        this.isShown = false;
        clearTimeout(this.next);
    }

    update() {}

    async read() {
        if (!this.isShown) return;
        clearTimeout(this.next);
        this.next = setTimeout(() => this.read(), READ_TIME);
        if (document.hidden) return;
        try {
            const station = await getJson("station");
            this.model.station = station;
            for (const link of station.links) await this.readPlan(link.name);
            this.draw(station);
        } catch {
            // The stream tells that the station is gone; the next reading comes.
        }
    }

    /** A plan changes only with the configuration, and then all values come anew. */
    async readPlan(link) {
        if (this.plans.get(link)?.fullCount === this.model.fullCount) return;
        const plan = await getJson("plan", { link });
        this.plans.set(link, { fullCount: this.model.fullCount, plan });
    }

    draw(station) {
        const list = byId("link-list");
        const open = new Set([...list.querySelectorAll("details[open]")].map((d) => d.dataset.of));
        const focused = document.activeElement?.closest("#link-list details")?.dataset.of;
        list.replaceChildren(...station.links.map((link) => this.card(link, open.has(link.name))));
        if (focused === undefined) return;
        for (const part of list.querySelectorAll("details"))
            if (part.dataset.of === focused) part.firstElementChild.focus({ preventScroll: true });
    }

    card(link, isOpen) {
        const now = this.model.stationNow();
        const since = `since ${dateText(link.since)} (${ageText(link.since, now)})`;
        const stations = link.stations.map((station) => [
            String(station.station), stateWord(station.state), dateText(station.since),
            station.trouble ?? "",
        ]);
        return make("article.card", { "data-card": link.name }, [
            make("h2", {}, [link.name, stateWord(link.state), make("small", { text: since }),
                make("small.mono", { text: link.link })]),
            ...(link.trouble ? [make("p.trouble", { text: link.trouble })] : []),
            figures(link),
            table("Stations", ["Station", "State", "Since", "Trouble"], stations),
            this.planPart(link.name, isOpen),
        ]);
    }

    planPart(link, isOpen) {
        const { plan } = this.plans.get(link);
        return make("details", { "data-of": link, open: isOpen }, [
            make("summary", {
                text: `Plan of reads: ${plan.reads.length} requests. ${cycleText(plan)}`,
            }),
            table("Requests", ["Station", "From", "Amount", "Rate", "Tags"], planRows(plan)),
        ]);
    }
}
