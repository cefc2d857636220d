"use strict";
// Shows the job that stands in the page as JSON. What the job says goes in as text, never as markup.
(() => {
    const job = JSON.parse(document.getElementById("job").textContent);
    const element = (id) => document.getElementById(id);
    const make = (tag, className, text) => {
        const made = document.createElement(tag);
        if (className)
            made.className = className;
        if (text !== undefined)
            made.textContent = text;
        return made;
    };

    // A chunk is a row: its kind, where it stands in the file, how long it is there, how long it is saved, and
    // perhaps what it says and whether its place is reckoned.
    const KIND = 0, START = 1, LENGTH = 2, SIZE = 3, TEXT = 4, IS_RECKONED = 5;
    const chunks = job.chunks;
    const kinds = job.kinds.map(([tag, label, group, meaning]) => ({ tag, label, group, meaning, count: 0, bytes: 0, isShown: true }));
    for (const chunk of chunks) {
        kinds[chunk[KIND]].count += 1;
        kinds[chunk[KIND]].bytes += chunk[LENGTH];
    }

    const grouped = (number) => String(number).replace(/\B(?=(\d{3})+$)/g, "\u202f");
    const bytesText = (count) => (count === 1 ? "1 byte" : `${grouped(count)} bytes`);
    const hex = (number) => "0x" + number.toString(16).toUpperCase();

    // Bytes that are no UTF-8 stand at U+EF80 and above. What would not show, or would show other text in
    // another order, is named instead.
    const unseen = /[\u0000-\u001f\u007f-\u009f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff\uef80-\uefff]/g;
    const named = (character) => {
        const code = character.charCodeAt(0);
        if (code < 0x20)
            return String.fromCharCode(0x2400 + code);
        if (code === 0x7f)
            return "\u2421";
        if (code >= 0xef80 && code <= 0xefff)
            return "\\x" + (code - 0xef00).toString(16).toUpperCase();
        return "\\u" + code.toString(16).toUpperCase().padStart(4, "0");
    };
    const readable = (text) => text.replace(unseen, named);
    const readableLines = (text) => text.split("\n").map(readable).join("\n");

    const textOf = (chunk) => chunk[TEXT] || "";
    const labelOf = (chunk) => kinds[chunk[KIND]].label;
    const firstLineOf = (chunk) => readable(textOf(chunk).split("\n", 1)[0]);
    const placeText = (chunk) => (chunk[IS_RECKONED] ? "~" : "") + hex(chunk[START]);

    function showHead() {
        const path = readable(job.name);
        const name = path.slice(path.lastIndexOf("/") + 1);
        document.title = name;
        element("name").textContent = name;
        const where = name === path ? "" : `${path}; `;
        const count = chunks.length === 1 ? "1 chunk" : `${grouped(chunks.length)} chunks`;
        element("summary").textContent = `${where}${bytesText(job.size)}, ${count}`;
        if (!job.parsed) {
            element("cause").hidden = false;
            element("cause").textContent = `This job is malformed and was taken as one raw stretch. ${readable(job.cause)}`;
        }
        showRecord();
    }

    // What is not known is most of many records; it must not hide the rest.
    function showRecord() {
        const unknown = [];
        for (const [label, value] of job.record) {
            if (value === null) {
                unknown.push(label.toLowerCase());
                continue;
            }
            const entry = make("div");
            entry.append(make("dt", "", label), make("dd", "", readable(value)));
            element("record").append(entry);
        }
        element("unknown").hidden = unknown.length === 0;
        element("unknown").textContent = `Not known: ${unknown.join(", ")}`;
    }

    // The bar. Each column of pixels takes the colour of what says most there, so that a command of 20 bytes
    // is seen in a job of gigabytes.
    const canvas = element("bar");
    const context = canvas.getContext("2d");
    const rank = { raw: 1, document: 2, sequence: 3, operator: 3, comment: 4, text: 5, "page-mark": 6, block: 7, pjl: 8, exit: 9 };
    const rankOf = (group) => rank[group] || 2;
    let colors = new Map();
    const view = { from: 0, to: Math.max(job.size, 1) };
    let selected = -1;
    let isListed = null; // By index, whether a chunk is listed; null for all. The bar shows the same.

    function readColors() {
        const style = getComputedStyle(document.documentElement);
        colors = new Map(kinds.map((kind) => [kind.group, style.getPropertyValue(`--${kind.group}`).trim()]));
        for (const name of ["page", "ink", "mark"])
            colors.set(`=${name}`, style.getPropertyValue(`--${name}`).trim());
    }

    function columnsOf(width) {
        const scale = width / (view.to - view.from);
        const columns = new Int32Array(width).fill(-1);
        const ranks = new Uint8Array(width);
        for (let index = 0; index < chunks.length; ++index) {
            const chunk = chunks[index];
            const kind = kinds[chunk[KIND]];
            const end = chunk[START] + chunk[LENGTH];
            if ((isListed && !isListed[index]) || end < view.from || chunk[START] > view.to || (chunk[LENGTH] === 0 && kind.group === "document"))
                continue;
            const own = rankOf(kind.group);
            const first = Math.max(0, Math.min(width - 1, Math.floor((chunk[START] - view.from) * scale)));
            const last = Math.max(first, Math.min(width - 1, Math.ceil((end - view.from) * scale) - 1));
            for (let x = first; x <= last; ++x) {
                if (own > ranks[x]) {
                    ranks[x] = own;
                    columns[x] = chunk[KIND];
                }
            }
        }
        return columns;
    }

    function drawBar() {
        const ratio = window.devicePixelRatio || 1;
        const width = Math.max(1, Math.round(canvas.clientWidth * ratio));
        const height = Math.max(1, Math.round(canvas.clientHeight * ratio));
        canvas.width = width;
        canvas.height = height;
        context.fillStyle = colors.get("=page");
        context.fillRect(0, 0, width, height);
        const columns = columnsOf(width);
        for (let x = 0; x < width;) {
            let end = x + 1;
            while (end < width && columns[end] === columns[x])
                ++end;
            if (columns[x] >= 0) {
                context.fillStyle = colors.get(kinds[columns[x]].group);
                context.fillRect(x, 0, end - x, height);
            }
            x = end;
        }
        drawBorders(width, height, ratio);
        drawSelected(width, height, ratio);
        element("range").textContent = `${hex(Math.floor(view.from))} to ${hex(Math.ceil(view.to))}`;
    }

    // Where chunks are wide enough to be told apart, a line stands between them.
    function drawBorders(width, height, ratio) {
        const scale = width / (view.to - view.from);
        context.fillStyle = colors.get("=page");
        let before = -10;
        let drawn = 0;
        for (let index = 0; index < chunks.length; ++index) {
            const chunk = chunks[index];
            const x = (chunk[START] - view.from) * scale;
            if ((isListed && !isListed[index]) || x <= 0 || x > width || chunk[LENGTH] * scale < 4 || x - before < 4 || ++drawn > 4000)
                continue;
            before = x;
            context.fillRect(Math.floor(x), 0, Math.max(1, Math.floor(ratio / 2)), height);
        }
    }

    function drawSelected(width, height, ratio) {
        if (selected < 0)
            return;
        const scale = width / (view.to - view.from);
        const chunk = chunks[selected];
        const first = (chunk[START] - view.from) * scale;
        const wide = Math.max(3 * ratio, chunk[LENGTH] * scale);
        context.strokeStyle = colors.get("=ink");
        context.lineWidth = 2 * ratio;
        context.strokeRect(first, ratio, wide, height - 2 * ratio);
    }

    let isBarDue = false;
    function barChanged() {
        if (isBarDue)
            return;
        isBarDue = true;
        requestAnimationFrame(() => {
            isBarDue = false;
            drawBar();
        });
    }

    function look(from, to) {
        const all = Math.max(job.size, 1);
        const span = Math.min(all, Math.max(16, to - from));
        view.from = Math.max(0, Math.min(all - span, from));
        view.to = view.from + span;
        barChanged();
    }

    function zoom(factor, at = (view.from + view.to) / 2) {
        look(at - (at - view.from) * factor, at + (view.to - at) * factor);
    }

    const move = (part) => look(view.from + (view.to - view.from) * part, view.to + (view.to - view.from) * part);
    const byteAt = (event) =>
        view.from + (event.offsetX / Math.max(1, canvas.clientWidth)) * (view.to - view.from);

    // The chunk under a place of the bar: the one that says most within two pixels of it.
    function chunkNear(place) {
        const reach = (2 * (view.to - view.from)) / Math.max(1, canvas.clientWidth);
        let found = -1;
        let best = -1;
        for (let index = 0; index < chunks.length; ++index) {
            const chunk = chunks[index];
            const kind = kinds[chunk[KIND]];
            if ((isListed && !isListed[index]) || place < chunk[START] - reach || place > chunk[START] + chunk[LENGTH] + reach)
                continue;
            const isIn = place >= chunk[START] && place < chunk[START] + chunk[LENGTH];
            const worth = rankOf(kind.group) + (isIn ? 0.5 : 0);
            if (worth > best) {
                best = worth;
                found = index;
            }
        }
        return found;
    }

    // What stands under the mouse is looked up once a frame: there may be a million chunks.
    let pointedAt = null;
    let isUnderDue = false;
    function pointAt(place) {
        pointedAt = place;
        if (isUnderDue)
            return;
        isUnderDue = true;
        requestAnimationFrame(() => {
            isUnderDue = false;
            const found = pointedAt === null ? -1 : chunkNear(pointedAt);
            element("under").textContent = found < 0 ? "" : wordsOf(chunks[found]);
        });
    }

    function wordsOf(chunk) {
        const said = chunk[TEXT] ? `; ${firstLineOf(chunk)}` : "";
        return `${placeText(chunk)}: ${labelOf(chunk)}, ${bytesText(chunk[LENGTH])}${said}`;
    }

    function listenToBar() {
        canvas.addEventListener("wheel", (event) => {
            event.preventDefault();
            if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY))
                move(Math.sign(event.deltaX || event.deltaY) * 0.1);
            else
                zoom(event.deltaY < 0 ? 0.8 : 1.25, byteAt(event));
        }, { passive: false });
        let drag = null;
        canvas.addEventListener("pointerdown", (event) => {
            drag = { x: event.clientX, from: view.from, to: view.to, hasMoved: false };
            canvas.setPointerCapture(event.pointerId);
        });
        canvas.addEventListener("pointerleave", () => pointAt(null));
        canvas.addEventListener("pointermove", (event) => {
            pointAt(byteAt(event));
            if (!drag)
                return;
            const shift = ((drag.x - event.clientX) / Math.max(1, canvas.clientWidth)) * (drag.to - drag.from);
            drag.hasMoved = drag.hasMoved || Math.abs(drag.x - event.clientX) > 3;
            if (drag.hasMoved)
                look(drag.from + shift, drag.to + shift);
        });
        canvas.addEventListener("pointerup", (event) => {
            const isClick = drag && !drag.hasMoved;
            drag = null;
            const found = isClick ? chunkNear(byteAt(event)) : -1;
            if (found >= 0)
                select(found, true);
        });
        const keys = {
            "+": () => zoom(0.5), "=": () => zoom(0.5), "-": () => zoom(2), "0": () => look(0, job.size),
            ArrowLeft: () => move(-0.2), ArrowRight: () => move(0.2),
        };
        canvas.addEventListener("keydown", (event) => {
            if (keys[event.key]) {
                event.preventDefault();
                keys[event.key]();
            }
        });
        element("zoom-in").addEventListener("click", () => zoom(0.5));
        element("zoom-out").addEventListener("click", () => zoom(2));
        element("zoom-all").addEventListener("click", () => look(0, job.size));
        new ResizeObserver(barChanged).observe(canvas);
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
            readColors();
            barChanged();
        });
    }

    function swatchOf(kind) {
        const swatch = make("span", "swatch");
        swatch.style.background = `var(--${kind.group})`;
        return swatch;
    }

    function showKinds() {
        for (const kind of kinds) {
            const button = make("button");
            button.setAttribute("aria-pressed", "true");
            button.title = `${kind.tag}: ${bytesText(kind.bytes)}`;
            button.append(swatchOf(kind), make("span", "", kind.label), make("span", "count", grouped(kind.count)));
            button.addEventListener("click", () => {
                kind.isShown = !kind.isShown;
                button.setAttribute("aria-pressed", String(kind.isShown));
                filter();
            });
            const item = make("li");
            item.append(button);
            element("kinds").append(item);
        }
    }

    // The list. Only the rows that are seen exist; where there are more than a page may be high, scrolling goes
    // by more than one row a step.
    const list = element("list");
    const rows = element("rows");
    const rowHeight = 24;
    const maxHeight = 12e6;
    let found = null; // Indices of the chunks that are listed; null for all.
    const listed = () => (found ? found.length : chunks.length);
    const chunkAt = (row) => (found ? found[row] : row);
    const seenRows = () => Math.max(1, Math.floor(list.clientHeight / rowHeight));

    function firstRow() {
        const height = rows.offsetHeight;
        if (listed() * rowHeight <= maxHeight)
            return Math.floor(list.scrollTop / rowHeight);
        const part = list.scrollTop / Math.max(1, height - list.clientHeight);
        return Math.round(Math.min(1, part) * (listed() - seenRows()));
    }

    function placeOf(row, first) {
        if (listed() * rowHeight <= maxHeight)
            return row * rowHeight;
        return list.scrollTop + (row - first) * rowHeight;
    }

    function makeRow(index) {
        const chunk = chunks[index];
        const kind = kinds[chunk[KIND]];
        const row = make("div", "row");
        row.id = `chunk-${index}`;
        row.setAttribute("role", "option");
        row.setAttribute("aria-selected", String(index === selected));
        const name = make("span", "kind");
        name.append(swatchOf(kind), make("span", "", kind.label));
        row.append(
            make("span", "number", placeText(chunk)),
            make("span", "number", grouped(chunk[SIZE])),
            name,
            chunk[TEXT] ? make("span", "meaning", firstLineOf(chunk)) : make("span", "meaning general", kind.meaning));
        row.addEventListener("click", () => select(index, false));
        return row;
    }

    function drawList() {
        const first = Math.max(0, firstRow() - 4);
        const last = Math.min(listed(), first + seenRows() + 10);
        const made = [];
        const seen = firstRow();
        for (let row = first; row < last; ++row) {
            const drawn = makeRow(chunkAt(row));
            drawn.style.top = `${placeOf(row, seen)}px`;
            made.push(drawn);
        }
        rows.replaceChildren(...made);
    }

    let isListDue = false;
    function listChanged() {
        if (isListDue)
            return;
        isListDue = true;
        requestAnimationFrame(() => {
            isListDue = false;
            drawList();
        });
    }

    // Sequences are shown with blanks between their parts, and written without.
    let searchable = null;
    function textsToSearch() {
        const textToSearch = (chunk) => {
            const packed = kinds[chunk[KIND]].group === "sequence" ? `\n${textOf(chunk).replaceAll(" ", "")}` : "";
            return `${labelOf(chunk)}\n${textOf(chunk)}${packed}`.toLowerCase();
        };
        searchable = searchable || chunks.map(textToSearch);
        return searchable;
    }

    // Whether a chunk is what was searched for; an offset stands for the chunk that it is in.
    function tester(wanted) {
        if (wanted === "")
            return () => true;
        const texts = textsToSearch();
        const place = /^0x[0-9a-f]+$/.test(wanted) ? Number(wanted) : -1;
        return (index) => {
            const chunk = chunks[index];
            return texts[index].includes(wanted) || (place >= chunk[START] && place < chunk[START] + chunk[LENGTH]);
        };
    }

    function filter() {
        const wanted = element("search").value.toLowerCase();
        const isAll = wanted === "" && kinds.every((kind) => kind.isShown);
        found = isAll ? null : [];
        isListed = isAll ? null : new Uint8Array(chunks.length);
        const isWanted = tester(wanted);
        for (let index = 0; !isAll && index < chunks.length; ++index) {
            if (kinds[chunks[index][KIND]].isShown && isWanted(index)) {
                found.push(index);
                isListed[index] = 1;
            }
        }
        element("found").textContent = isAll ? "" : `${grouped(listed())} of ${grouped(chunks.length)}`;
        element("nothing").hidden = isAll || listed() > 0;
        rows.style.height = `${Math.min(maxHeight, listed() * rowHeight)}px`;
        list.scrollTop = 0;
        barChanged();
        listChanged();
    }

    function rowOf(index) {
        if (!found)
            return index;
        let low = 0, high = found.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (found[middle] < index)
                low = middle + 1;
            else
                high = middle;
        }
        return found[low] === index ? low : -1;
    }

    function scrollTo(row) {
        if (listed() * rowHeight <= maxHeight) {
            const top = row * rowHeight;
            if (top < list.scrollTop || top + rowHeight > list.scrollTop + list.clientHeight)
                list.scrollTop = top - list.clientHeight / 2;
        } else if (row < firstRow() || row >= firstRow() + seenRows()) {
            list.scrollTop = (row / (listed() - seenRows())) * (rows.offsetHeight - list.clientHeight);
        }
    }

    function select(index, isFromBar) {
        selected = index;
        const chunk = chunks[index];
        const kind = kinds[chunk[KIND]];
        element("detail").hidden = false;
        element("detail-title").textContent = `${kind.label} (${kind.tag})`;
        const about = chunk[IS_RECKONED] ? "about " : "";
        const saved = chunk[SIZE] === chunk[LENGTH] ? "" : `; saved as ${bytesText(chunk[SIZE])}`;
        element("detail-place").textContent =
            `Chunk ${grouped(index)}, at ${about}${hex(chunk[START])} (${grouped(chunk[START])}), ${about}${bytesText(chunk[LENGTH])}${saved}`;
        element("detail-text").textContent = chunk[TEXT] ? readableLines(chunk[TEXT]) : kind.meaning;
        list.setAttribute("aria-activedescendant", `chunk-${index}`);
        const row = rowOf(index);
        if (row >= 0)
            scrollTo(row);
        const end = chunk[START] + chunk[LENGTH];
        if (!isFromBar && (end < view.from || chunk[START] > view.to)) {
            const half = (view.to - view.from) / 2;
            look(chunk[START] - half, chunk[START] + half);
        }
        barChanged();
        listChanged();
        if (!isFromBar)
            requestAnimationFrame(() => uncover(index));
    }

    // What is said of a chunk lies over the end of the list, unless the page is scrolled to its own end.
    function uncover(index) {
        const row = element(`chunk-${index}`);
        const covered = row ? row.getBoundingClientRect().bottom - element("detail").getBoundingClientRect().top : 0;
        if (covered > 0)
            scrollBy(0, covered + rowHeight);
    }

    function deselect() {
        selected = -1;
        element("detail").hidden = true;
        list.setAttribute("aria-activedescendant", "");
        barChanged();
        listChanged();
    }

    function selectRow(row) {
        if (listed() > 0)
            select(chunkAt(Math.max(0, Math.min(listed() - 1, row))), false);
    }

    function listenToList() {
        list.addEventListener("scroll", listChanged);
        list.addEventListener("keydown", (event) => {
            const row = selected < 0 ? -1 : rowOf(selected);
            const rowsOn = { ArrowDown: row + 1, ArrowUp: row - 1, PageDown: row + seenRows(), PageUp: row - seenRows(), Home: 0, End: listed() - 1 };
            if (event.key in rowsOn) {
                event.preventDefault();
                selectRow(rowsOn[event.key]);
            }
        });
        element("search").addEventListener("input", filter);
        element("search").addEventListener("keydown", (event) => {
            if (event.key === "Enter" || event.key === "ArrowDown") {
                event.preventDefault();
                selectRow(0);
                list.focus();
            }
        });
        element("detail-close").addEventListener("click", deselect);
        document.addEventListener("keydown", (event) => {
            if (event.key === "Escape" && document.activeElement !== element("search"))
                deselect();
            if (event.key === "/" && document.activeElement !== element("search")) {
                event.preventDefault();
                element("search").focus();
            }
        });
        new ResizeObserver(listChanged).observe(list);
    }

    readColors();
    showHead();
    showKinds();
    listenToBar();
    listenToList();
    filter();
    drawBar();
    drawList();
    document.documentElement.dataset.ready = "yes";
})();
