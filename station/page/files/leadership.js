// Which of the browser's tabs holds the one stream.
//
// Browsers allow six connections to a host. So one tab, the leader, reads the stream and tells the
// others. navigator.locks would choose it, but exists only on https and on loopback; the tabs talk
// over a BroadcastChannel.
//
//               nobody answers in ASK_TIME, or the leader resigns
//      ASKING ----------------------------------------------------> LEADING
//        |   ^                                                      |    ^
//        |   | the tab goes on after a freeze        a higher claim |    | the leader is silent for
//        v   |                                       was made       v    | LONGEST_WAIT, or resigns
//      FOLLOWING <---------------------------------------------------    |
//            +-----------------------------------------------------------+
//
// - A claim is a term and the tab's name; the higher term wins, then the higher name. Who takes
//   over claims one term more, so two tabs that claim at once agree, and a leader that slept knows
//   itself replaced by the first message that it hears.
// - All that the leader says shows that it is there. It says something each LEAD_TIME; the timers
//   of a hidden tab run once a second, and the station's beats come once a second.

const ASK_TIME = 80;
const LEAD_TIME = 500;
const LONGEST_WAIT = 1300;
const LOOK_TIME = 200;

export const ASKING = "asking";
export const FOLLOWING = "following";
export const LEADING = "leading";

/** @typedef {{term: number, tab: string}} Claim */

/** @param {Claim} a
 * @param {Claim} b */
export function isHigher(a, b) {
    return a.term !== b.term ? a.term > b.term : a.tab > b.tab;
}

function tabName() {
    const numbers = crypto.getRandomValues(new Uint32Array(2));
    return [...numbers].map((number) => number.toString(36)).join("-");
}

export class Leadership {
    /** @param {BroadcastChannel} channel
     * @param {{begin: () => void, end: () => void, told: (message: any) => void,
     *     asked: (tab: string) => void}} owner  begin and end leading; `told`: a message of the
     *     leader; `asked`: a tab that this leader shall tell what is known */
    constructor(channel, owner) {
        this.channel = channel;
        this.owner = owner;
        this.tab = tabName();
        this.state = ASKING;
        /** @type {Claim} */
        this.claim = { term: 0, tab: "" };
        this.heardAt = 0;
        this.isStopped = true;
        channel.addEventListener("message", (message) => this.heard(message.data));
        setInterval(() => this.look(), LOOK_TIME);
        setInterval(() => this.say({ kind: "lead" }), LEAD_TIME);
    }

    /** Looks for a leader. */
    start() {
        this.isStopped = false;
        this.ask();
    }

    /** The tab is put aside: another one takes over at once. */
    stop() {
        if (this.state === LEADING) {
            this.say({ kind: "resign" });
            this.owner.end();
        }
        this.state = ASKING;
        this.isStopped = true;
    }

    /** Says something to the other tabs, as the leader.
     * @param {any} message */
    say(message) {
        if (this.state === LEADING && !this.isStopped)
            this.channel.postMessage({ ...message, claim: this.claim });
    }

    /** Says something to the leader.
     * @param {any} message */
    tellLeader(message) {
        this.channel.postMessage({ ...message, from: this.tab });
    }

    ask() {
        this.state = ASKING;
        this.tellLeader({ kind: "ask" });
        setTimeout(() => {
            if (this.state === ASKING) this.lead();
        }, ASK_TIME);
    }

    lead() {
        if (this.isStopped) return;
        this.claim = { term: this.claim.term + 1, tab: this.tab };
        this.state = LEADING;
        this.say({ kind: "lead" });
        this.owner.begin();
    }

    look() {
        if (this.isStopped || this.state !== FOLLOWING) return;
        if (performance.now() - this.heardAt >= LONGEST_WAIT) this.lead();
    }

    heard(message) {
        if (this.isStopped) return;
        if (message.claim) this.heardClaim(message);
        else if (this.state === LEADING) this.heardQuestion(message);
    }

    heardQuestion(message) {
        if (message.kind === "ask") this.owner.asked(message.from);
        else this.owner.told(message);
    }

    heardClaim(message) {
        const isOfLeader = message.claim.tab === this.claim.tab
            && message.claim.term === this.claim.term;
        if (!isOfLeader && !isHigher(message.claim, this.claim)) return this.say({ kind: "lead" });
        if (this.state === LEADING) this.owner.end();
        this.claim = message.claim;
        this.state = FOLLOWING;
        this.heardAt = performance.now();
        if (message.kind === "resign") return this.lead();
        if (!isOfLeader) this.owner.told({ kind: "newLeader" });
        this.owner.told(message);
    }
}
