// Recipes as CSV files, as kakb-host reads and writes them.

/** A row of a recipe; all texts.
 * @typedef {{name: string, station: string, area: string, address: string, type: string,
 *     value: string}} RecipeRow */

export const COLUMNS = ["name", "station", "area", "address", "type", "value"];

/** The records of CSV text: quotes, doubled quotes, line breaks within quotes; lines without text
 * and lines that begin with # are skipped.
 * @param {string} text
 * @returns {{separator: string, records: string[][]}}
 * @throws {Error} in words, with the line */
export function csvRecords(text) {
    const plain = text.replace(/^\ufeff/, "").replace(/\r\n?/g, "\n");
    const head = plain.split("\n").find((line) => line.trim() && !line.startsWith("#")) ?? "";
    const separator = head.includes(";") && !head.includes(",") ? ";" : ",";
    return { separator, records: new CsvReader(plain, separator).read() };
}

class CsvReader {
    constructor(text, separator) {
        this.text = text;
        this.separator = separator;
        this.at = 0;
        this.line = 1;
    }

    read() {
        const records = [];
        while (this.at < this.text.length) {
            const isComment = this.text[this.at] === "#";
            const record = isComment ? this.skipLine() : this.readRecord();
            if (record.some((field) => field !== "")) records.push(record);
        }
        return records;
    }

    skipLine() {
        while (this.at < this.text.length && this.text[this.at] !== "\n") ++this.at;
        ++this.at;
        ++this.line;
        return [];
    }

    readRecord() {
        const fields = [];
        do fields.push(this.readField());
        while (this.text[this.at++] === this.separator);
        ++this.line;
        return fields;
    }

    readField() {
        const blanks = /[ \t]*/y;
        blanks.lastIndex = this.at;
        this.at += blanks.exec(this.text)[0].length;
        return this.text[this.at] === "\"" ? this.readQuoted() : this.readPlain();
    }

    isFieldEnd() {
        const character = this.text[this.at];
        return character === undefined || character === "\n" || character === this.separator;
    }

    readPlain() {
        const start = this.at;
        while (!this.isFieldEnd()) ++this.at;
        return this.text.slice(start, this.at).trim();
    }

    readQuoted() {
        const line = this.line;
        let field = "";
        for (++this.at; this.at < this.text.length; ++this.at) {
            if (this.text[this.at] === "\n") ++this.line;
            if (this.text[this.at] === "\"" && this.text[++this.at] !== "\"") {
                if (this.readPlain() !== "")
                    throw new Error(`line ${line}: there is text behind a closing quote`);
                return field;
            }
            field += this.text[this.at];
        }
        throw new Error(`line ${line}: a quoted field has no closing quote`);
    }
}

/** The rows of a recipe's file. Where semicolons part the fields, floats may have a decimal comma.
 * @param {string} text
 * @returns {RecipeRow[]}
 * @throws {Error} in words */
export function recipeRows(text) {
    const { separator, records } = csvRecords(text);
    const head = (records.shift() ?? []).map((name) => name.toLowerCase());
    const missing = COLUMNS.filter((name) => !head.includes(name) && name !== "value");
    if (missing.length > 0) throw new Error(`the file has no column ${missing.join(", ")}`);
    return records.map((record) => {
        const fields = COLUMNS.map((name) => [name, record[head.indexOf(name)] ?? ""]);
        const row = Object.fromEntries(fields);
        const hasComma = separator === ";" && row.type.startsWith("float");
        return hasComma ? { ...row, value: row.value.replace(",", ".") } : row;
    });
}

function fieldText(text) {
    return /[",\n;#]|^\s|\s$/.test(text) ? `"${text.replaceAll("\"", "\"\"")}"` : text;
}

/** The file of a recipe.
 * @param {RecipeRow[]} rows */
export function recipeFile(rows) {
    const lines = rows.map((row) => COLUMNS.map((name) => fieldText(row[name])).join(","));
    return `${COLUMNS.join(",")}\n${lines.join("\n")}\n`;
}
