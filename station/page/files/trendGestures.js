// Fingers and the mouse on the trends. Nothing here knows what is drawn.
//
//   one pointer moves, not pressed     the cursor
//   one pointer, pressed and moved     pan
//   two pointers                       zoom around their middle, and pan
//   wheel                              zoom around the pointer
//   double click                       live again

const WHEEL_FACTOR = 1.25;

/** @param {HTMLElement} element  of all lanes
 * @param {{timeAt: (x: number) => number, cursor: (time: number|null) => void,
 *     pan: (ms: number) => void, zoom: (time: number, factor: number) => void,
 *     live: () => void}} trend  `x` is a place on the screen; a factor below 1 zooms in */
export function listenToGestures(element, trend) {
    const pointers = new Map(); // of fingers and pressed buttons: the last place

    const isOnPlot = (event) => event.target.closest(".plot") !== null;
    const span = () => {
        const [a, b] = [...pointers.values()];
        return Math.max(20, Math.abs(a - b));
    };
    const middle = () => {
        const places = [...pointers.values()];
        return places.reduce((sum, x) => sum + x, 0) / places.length;
    };

    element.addEventListener("pointerdown", (event) => {
        if (!isOnPlot(event)) return;
        element.setPointerCapture(event.pointerId);
        pointers.set(event.pointerId, event.clientX);
        trend.cursor(trend.timeAt(event.clientX));
    });
    element.addEventListener("pointermove", (event) => {
        if (!pointers.has(event.pointerId)) {
            trend.cursor(isOnPlot(event) ? trend.timeAt(event.clientX) : null);
            return;
        }
        const before = { middle: middle(), span: pointers.size > 1 ? span() : 1 };
        pointers.set(event.pointerId, event.clientX);
        trend.pan(trend.timeAt(before.middle) - trend.timeAt(middle()));
        if (pointers.size > 1) trend.zoom(trend.timeAt(middle()), before.span / span());
    });
    for (const name of ["pointerup", "pointercancel"])
        element.addEventListener(name, (event) => pointers.delete(event.pointerId));
    element.addEventListener("pointerleave", () => trend.cursor(null));
    element.addEventListener("wheel", (event) => {
        if (!isOnPlot(event)) return;
        event.preventDefault();
        const factor = event.deltaY < 0 ? 1 / WHEEL_FACTOR : WHEEL_FACTOR;
        trend.zoom(trend.timeAt(event.clientX), factor);
    }, { passive: false });
    element.addEventListener("dblclick", (event) => {
        if (isOnPlot(event)) trend.live();
    });
}
