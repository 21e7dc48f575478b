// Short forms for making and changing elements. Text goes in as text, never as HTML.

/** The element of an id, which the page has.
 * @param {string} id
 * @returns {any} */
export function byId(id) {
    return document.getElementById(id);
}

/** Makes an element.
 * @param {string} name  "div", or with classes "div.card.wide"
 * @param {Object<string, any>} [given]  attributes; `text` is the content; `on…` are listeners;
 *     null and false leave an attribute out
 * @param {(Node|string)[]} [children]
 * @returns {any} */
export function make(name, given = {}, children = []) {
    const [tag, ...classes] = name.split(".");
    const element = document.createElement(tag);
    if (classes.length > 0) element.className = classes.join(" ");
    for (const [key, value] of Object.entries(given)) {
        if (key === "text") element.textContent = value;
        else if (key.startsWith("on")) element.addEventListener(key.slice(2), value);
        else setAttribute(element, key, value);
    }
    element.append(...children);
    return element;
}

/** The head of a table.
 * @param {string[]} names  of the columns */
export function headRow(names) {
    const cells = names.map((text) => make("th", { scope: "col", text }));
    return make("thead", {}, [make("tr", {}, cells)]);
}

/** Sets an attribute; null, undefined and false take it away. What does not change is not touched.
 * @param {Element} element */
export function setAttribute(element, name, value) {
    if (value === null || value === undefined || value === false) {
        if (element.hasAttribute(name)) element.removeAttribute(name);
        return;
    }
    const text = value === true ? "" : String(value);
    if (element.getAttribute(name) !== text) element.setAttribute(name, text);
}

/** Sets the text of an element. What does not change is not touched: a live region would speak.
 * @param {Node} element
 * @param {string} text */
export function setText(element, text) {
    if (element.textContent !== text) element.textContent = text;
}

/** Offers bytes or text as a file.
 * @param {string} name
 * @param {Blob} blob */
export function saveFile(name, blob) {
    const address = URL.createObjectURL(blob);
    const anchor = make("a", { href: address, download: name });
    document.body.append(anchor);
    anchor.click();
    anchor.remove();
    setTimeout(() => URL.revokeObjectURL(address), 60000);
}

/** Fills a select with names, and keeps its choice.
 * @param {HTMLSelectElement} select
 * @param {string[]} names
 * @returns {boolean} whether another name is chosen now */
export function fillSelect(select, names) {
    const present = [...select.options].map((option) => option.value);
    if (present.length === names.length && present.every((name, i) => name === names[i]))
        return false;
    const chosen = select.value;
    select.replaceChildren(...names.map((name) => make("option", { value: name, text: name })));
    if (names.includes(chosen)) select.value = chosen;
    return select.value !== chosen;
}
