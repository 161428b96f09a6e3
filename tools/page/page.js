"use strict";

const find = (id) => document.getElementById(id);
const rows = JSON.parse(find("rows").textContent);
const largestFile = 64 << 20;  // As the program takes.
const utf8 = new TextEncoder();

// An element with its attributes, texts and elements. Nothing that was pasted ever becomes markup.
function make(name, attributes, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes ?? {})) {
    if (value !== null && value !== false) element.setAttribute(key, value === true ? "" : value);
  }
  element.append(...children.flat().filter((child) => child !== null));
  return element;
}

// The program's own code.
const engine = {
  async start() {
    const bytes = Uint8Array.from(atob(find("engine").textContent), (c) => c.charCodeAt(0));
    this.module = await WebAssembly.compile(bytes);
    this.renew();
  },

  // It never reaches a file: what it would be told of one is that there is none.
  renew() {
    const refuse = () => 8;
    const files = {fd_close: refuse, fd_seek: refuse, fd_write: refuse};
    const instance = new WebAssembly.Instance(this.module, {wasi_snapshot_preview1: files});
    this.code = instance.exports;
    this.code._initialize();
    this.give(utf8.encode(rows.map((row) => `${row.level}\t${row.text}\n`).join("")));
    this.code.TakeLogRows();
  },

  give(bytes) {
    const place = this.code.TakeInput(bytes.length);
    new Uint8Array(this.code.memory.buffer, place, bytes.length).set(bytes);
  },

  ask(question, bytes, ...numbers) {
    try {
      if (bytes) this.give(bytes);
      const place = this.code[question](...numbers);  // It may need another, larger buffer.
      const answer = new Uint8Array(this.code.memory.buffer, place);
      return JSON.parse(new TextDecoder().decode(answer.subarray(0, answer.indexOf(0))));
    } catch (error) {
      this.renew();  // What it had in its memory is not to be trusted any more.
      throw new Error(`This cannot be read: ${error.message}.`);
    }
  },
};

// What was given.

function textOf(bytes) {
  const wide = bytes[0] === 0xff && bytes[1] === 0xfe;  // As a shell of Windows saves it.
  return new TextDecoder(wide ? "utf-16le" : "utf-8").decode(bytes);
}

function readJson(text) {
  try {
    return JSON.parse(text);
  } catch (error) {
    throw new Error(`This begins like a case file and is none, or a part of one: ${error.message}.`);
  }
}

// A host may keep the log in the form of "deviceid --json": as entries.
function logOf(data) {
  if (typeof data.log === "string") return data.log;
  if (!Array.isArray(data.log)) return null;
  return data.log.map(({time, level, message}) =>
      `[${time}] ${`[${level}]`.padEnd(7)} ${message}\n`).join("");
}

function explainCase(data) {
  if (data.schema !== undefined && data.schema !== 1) {
    throw new Error(`This case file has schema ${data.schema}, and this page reads schema 1.`);
  }
  const explanation = data.command === "explain" ? data : data.explain;
  const log = logOf(data);
  const reports = [];
  if (typeof explanation?.sentence === "string") {
    const told = engine.ask("ReadExplanation", utf8.encode(JSON.stringify(explanation)));
    reports.push({...told, explanation, about: "the machine"});
  }
  if (log) reports.push({...engine.ask("ExplainSavedLog", utf8.encode(log)), about: "the log"});
  if (reports.length === 0) throw new Error("This is JSON, but holds neither an explanation nor a log.");
  return {reports, data};
}

function explain(bytes) {
  if (bytes.length > largestFile) throw new Error("This is larger than 64 MB.");
  const text = textOf(bytes.subarray(0, 4096)).trimStart();
  if (text.startsWith("{")) return explainCase(readJson(textOf(bytes)));
  return {reports: [{...engine.ask("ExplainSavedLog", bytes), about: "the log"}]};
}

// What is shown.

const marks = {same: "=", changed: "≠", moved: "→", gone: "–", new: "+", unknown: ""};

function tone(told) {
  if (told.explanation.verdict === null) return "open";
  return ["good", "warn", "bad"][told.status / 10] ?? "bad";
}

function showVerdict(told) {
  const {verdict, sentence, advice} = told.explanation;
  return make("div", {class: `verdict ${tone(told)}`, "data-verdict": verdict ?? "null"},
      make("strong", {class: "label"}, told.label), make("p", {class: "sentence"}, sentence),
      advice ? make("p", {class: "advice"}, make("b", {}, "What to do "), advice) : null);
}

// For those who do not see the page. A whole report would be too much to listen to.
function say(...reports) {
  find("said").textContent =
      reports.map(({label, explanation}) => `${label}. ${explanation.sentence}`).join(" ");
}

function showParts(parts) {
  if (!parts?.length) return null;
  const columns = [["stored", "when stored"], ["present", "now"]].filter(
      ([key]) => parts.some((part) => part[key] !== null));
  const known = parts.some((part) => part.state !== "unknown");
  const head = ["part", ...columns.map(([, title]) => title), ...(known ? ["state"] : [])];
  return make("table", {class: "parts"},
      make("thead", {}, make("tr", {}, head.map((title) => make("th", {scope: "col"}, title)))),
      make("tbody", {}, parts.map((part) => make("tr", {class: part.state},
          make("th", {scope: "row"}, part.name === "unnamed" ? "one of two" : part.name),
          columns.map(([key, title]) =>
              make("td", {"data-title": title}, make("bdi", {class: "value"}, part[key] ?? "–"))),
          known ? make("td", {}, make("span", {class: "state"},
                                      make("i", {"aria-hidden": "true"}, marks[part.state] ?? ""),
                                      part.state)) : null))));
}

const day = (date) => date?.replace("T", " ").replace(/:\d\dZ/, " UTC") ?? "unknown";

function outcome(call, quote) {
  if (call.random) return "a random id";
  return call.id ? quote(call.id) : `no id, but result ${call.result}`;
}

function showFacts({id, record, next, recheck, agree, compared, needed, changes_left: left}, about) {
  const facts = [];
  const tell = (name, text) => facts.push(make("dt", {}, name), make("dd", {}, text));
  const quote = (text) => make("bdi", {class: "value"}, text);
  if (id) tell(about === "the log" ? "id of the call" : "stored id", quote(id));
  if (record) tell("record of", `${day(record.date)}, in ${record.path || "this folder"}`);
  if (record) tell("compared from", day(record.compared_from));
  if (next) tell("next call", outcome(next, quote));
  if (recheck) tell("a recheck", outcome(recheck, quote));
  if (typeof compared === "number") {
    tell("comparison", `${agree} of ${compared} agree, ${needed} have to; ` +
        (left > 1 ? `${left} more changes are forgiven` : `${left ? "one" : "no"} more change is forgiven`));
  }
  return facts.length ? make("dl", {class: "facts"}, facts) : null;
}

function showNotes(warnings) {
  if (!warnings?.length) return null;
  return [make("h3", {}, "Notes"), make("ul", {class: "notes"},
      warnings.map(({text}) => make("li", {}, make("bdi", {}, text))))];
}

function showDifferences(against) {
  if (!against?.length) return null;
  const quote = (text) => text === null ? "nothing" : `“${text}”`;
  return [make("h3", {}, "Differs from the kept copy"), make("ul", {}, against.map((one) =>
      make("li", {}, make("bdi", {}, `${one.what} was ${quote(one.kept)} and is ${quote(one.present)}`))))];
}

// The picture with the path through it, and the path in words.
function showPath(path, about) {
  if (!path) return null;
  const picture = find("picture").content.firstElementChild.cloneNode(true);
  const groups = new Map();
  for (const group of picture.querySelectorAll("[id]")) {
    groups.set(group.id, group);
    group.removeAttribute("id");  // A case file has two pictures.
  }
  const words = (group, between) => [...group?.querySelectorAll("text") ?? []].map(
      (text) => text.textContent.trim()).join(between);
  const nodes = path.split(" ");
  const steps = nodes.map((node, place) => {
    const edge = groups.get(`path-${node}-${nodes[place + 1]}`);
    const group = groups.get(`path-${node}`);
    for (const lit of [group, edge]) lit?.classList.add("lit");
    const end = !group.classList.contains("question");
    return make("li", {class: end ? "end" : null}, words(group, end ? ", " : " "),
                edge ? [" ", make("b", {}, words(edge))] : null);
  });
  const next = nodes.includes("known") ? "next comparison" : "next call";
  const title = about === "the log" ? "The path of this call" : `The path of the ${next}`;
  picture.setAttribute("role", "img");
  picture.setAttribute("aria-label", `${title}, which the list below tells in words`);
  return make("section", {class: "card path"}, make("h2", {}, title),
      make("div", {class: "scroll", tabindex: "0", role: "group", "aria-label": "Picture"}, picture),
      make("ol", {class: "steps"}, steps));
}

// The meaning of a line. Its HTML was made from docs/log.md when this page was built.
function showMeaning(row, repeated) {
  const cell = make("td", {class: "meaning"});
  if (repeated) {
    cell.append(make("p", {class: "again"}, "As above."));
  } else if (row) {
    cell.append(make("p"), make("p", {class: "remedy"}));
    cell.firstChild.innerHTML = row.meaning;
    cell.lastChild.innerHTML = row.remedy;
    if (row.remedy === "Nothing.") cell.lastChild.remove();
  } else {
    cell.append(make("p", {class: "again"}, "The library writes no such line, or it was cut."));
  }
  return cell;
}

function showEntries(entries) {
  const table = make("table", {class: "lines"}, make("thead", {}, make("tr", {},
      ["time", "line", "meaning"].map((title) => make("th", {scope: "col"}, title)))));
  let body = null;
  let before = null;
  for (const {time, level, message, row} of entries) {
    const known = rows[row];
    const heading = known?.heading ?? body?.dataset.heading ?? "";
    if (body?.dataset.heading !== heading) {
      body = make("tbody", {"data-heading": heading});
      if (heading) {
        body.append(make("tr", {class: "heading"},
                         make("th", {colspan: "3", scope: "rowgroup"}, heading)));
      }
      table.append(body);
    }
    body.append(make("tr", {class: level.toLowerCase()},
        make("td", {class: "time"}, time, make("span", {class: "level"}, level)),
        make("td", {class: "line"}, make("bdi", {}, message || "(no text)")),
        showMeaning(known, known && row === before)));
    before = row;
  }
  return table;
}

// The last call is explained; those before it are there for who wants to read them.
function showLines(entries) {
  if (!entries?.length) return null;
  const isStart = ({message}) => message.startsWith("Execute ");
  const start = Math.max(0, entries.findLastIndex(isStart));
  const earlier = entries.slice(0, start);
  const calls = Math.max(1, earlier.filter(isStart).length);
  const details = make("details", {},
      make("summary", {}, calls === 1 ? "One earlier call" : `${calls} earlier calls`));
  details.addEventListener("toggle", () => details.append(showEntries(earlier)), {once: true});
  return make("section", {class: "card"}, make("h2", {}, "Line by line"),
      earlier.length ? details : null, showEntries(entries.slice(start)));
}

function showReport(told, several) {
  const {explanation, about} = told;
  return make("article", {},
      several ? make("h2", {}, about === "the log" ? "What the call of the log did"
                                                   : "The machine, as the report found it") : null,
      make("section", {class: "card"}, showVerdict(told), showFacts(explanation, about),
           showParts(explanation.parts), showNotes(explanation.warnings),
           showDifferences(explanation.against)),
      showPath(told.path, about), showLines(told.entries));
}

// A case file holds more than its explanation.
function showData(data) {
  return make("details", {class: "card"}, make("summary", {}, "All that is in this file"),
              make("pre", {}, JSON.stringify(data, null, 2)));
}

function showAll(bytes, source) {
  find("trouble").hidden = true;
  find("reports").replaceChildren();
  find("clear").hidden = !bytes;
  find("source").textContent = source ?? "";
  if (!bytes?.length) return;
  try {
    const {reports, data} = explain(bytes);
    find("reports").append(...reports.map((told) => showReport(told, reports.length > 1)));
    say(...reports);
    if (data?.command === "report") find("reports").append(showData(data));
  } catch (error) {
    find("trouble").textContent = error.message;
    find("trouble").hidden = false;
  }
}

const sizeOf = (bytes) => bytes < 1024 ? `${bytes} bytes` : `${Math.round(bytes / 1024)} KB`;

async function showFile(file) {
  if (!file) return;
  find("text").value = "";
  const tooLarge = file.size > largestFile;
  const bytes = tooLarge ? {length: file.size} : new Uint8Array(await file.arrayBuffer());
  showAll(bytes, `${file.name}, ${sizeOf(file.size)}`);
}

function watchInput() {
  const text = find("text");
  const drop = find("drop");
  text.addEventListener("input", () => showAll(utf8.encode(text.value)));
  find("file").addEventListener("change", (event) => showFile(event.target.files[0]));
  find("clear").addEventListener("click", () => {
    text.value = "";
    find("file").value = "";
    showAll(null);
    text.focus();
  });
  find("example").addEventListener("click", () => {
    text.value = find("example-log").content.textContent.trimStart();
    showAll(utf8.encode(text.value), "an example");
  });
  document.addEventListener("dragover", (event) => {
    event.preventDefault();
    drop.classList.add("over");
  });
  document.addEventListener("dragleave", () => drop.classList.remove("over"));
  document.addEventListener("drop", (event) => {
    event.preventDefault();
    drop.classList.remove("over");
    selectTab(find("tab-explain"));
    if (event.dataTransfer.files.length) return showFile(event.dataTransfer.files[0]);
    text.value = event.dataTransfer.getData("text");
    showAll(utf8.encode(text.value));
  });
}

// Tabs, which the arrow keys change.

const tabs = [...document.querySelectorAll("[role=tab]")];

function selectTab(chosen) {
  for (const tab of tabs) {
    tab.setAttribute("aria-selected", tab === chosen);
    tab.tabIndex = tab === chosen ? 0 : -1;
    find(tab.getAttribute("aria-controls")).hidden = tab !== chosen;
  }
}

function watchTabs() {
  for (const [place, tab] of tabs.entries()) {
    tab.addEventListener("click", () => selectTab(tab));
    tab.addEventListener("keydown", ({key}) => {
      const step = {ArrowRight: 1, ArrowLeft: -1}[key];
      if (!step) return;
      const next = tabs[(place + step + tabs.length) % tabs.length];
      selectTab(next);
      next.focus();
    });
  }
}

// Parts that are played.

const partNames = ["volume", "product", "board", "network"];
const states = ["same", "changed", "gone"];
const changes = partNames.flatMap((name, part) =>
    [1, 2].map((state) => ({part, state, title: `${name} ${states[state]}`})));

const compare = (played) => engine.ask("PlayChanges", null, ...played);

function showSwitches() {
  for (const [part, {name, stored}] of compare([0, 0, 0, 0]).explanation.parts.entries()) {
    find("switches").append(make("fieldset", {},
        make("legend", {}, name, " ", make("span", {class: "value"}, stored)),
        make("div", {class: "choice"}, states.map((state, number) => make("label", {},
            make("input", {type: "radio", name: `part-${part}`, value: number, checked: !number}),
            make("span", {}, state))))));
  }
  find("switches").addEventListener("change", showPlayed);
}

// Both lists as they are compared: place by place.
function showPlaces(places) {
  const value = (part) => part ? [make("small", {}, part.name), part.text] : "–";
  const line = (title, key) => make("tr", {}, make("th", {scope: "row"}, title),
      places.map((place) => make("td", {class: place[key] ? null : "none"},
                                 make("span", {class: "value"}, value(place[key])))));
  const mark = ({agrees}) => agrees === undefined ? make("td", {}, "not compared") :
      make("td", {class: agrees ? "yes" : "no"}, agrees ? "✓ yes" : "✗ no");
  return make("table", {class: "places"},
      make("thead", {}, make("tr", {}, make("th", {}, "place"),
          places.map((_, number) => make("th", {scope: "col"}, number + 1)))),
      make("tbody", {}, line("record", "stored"),
           make("tr", {class: "marks"}, make("th", {scope: "row"}, "agree"), places.map(mark)),
           line("now", "present")));
}

function showPlayed() {
  const played = partNames.map((_, part) =>
      Number(document.querySelector(`[name=part-${part}]:checked`).value));
  const told = compare(played);
  const {explanation} = told;
  say(told);
  const moved = explanation.parts.some(({state}) => state === "moved");
  find("played").replaceChildren(make("section", {class: "card"},
      showVerdict(told), showPlaces(told.places),
      moved ? make("p", {class: "hint"}, "A part that is gone has no place in the list. " +
                                         "Those behind it move forward, and agree no more.") : null,
      showFacts(explanation)));
  for (const cell of find("matrix").querySelectorAll("button")) {
    cell.ariaCurrent = cell.dataset.played === played.join("") ? "true" : null;
  }
}

// The rows and columns of the matrix; one change alone stands where both are the same.
function showCell(row, column) {
  if (row !== column && row.part === column.part) return make("td", {class: "none"});
  const played = partNames.map(() => 0);
  for (const {part, state} of [row, column]) played[part] = state;
  const {label, explanation} = compare(played);
  const kept = label === "KEPT";
  const name = row === column ? row.title : `${row.title}, ${column.title}`;
  return make("td", {role: "gridcell"}, make("button", {
    class: `cell ${kept ? "kept" : "lost"}${row === column ? " alone" : ""}`, tabindex: "-1",
    "data-played": played.join(""), title: `${name}: ${explanation.sentence}`,
    "aria-label": `${name}: ${kept ? "kept" : "lost"}`,
  }, kept ? "✓" : "✗", make("span", {}, kept ? " kept" : " lost")));
}

function showMatrix() {
  find("matrix").append(
      make("thead", {},
          make("tr", {role: "row"}, make("td", {rowspan: "2"}), partNames.map((name) =>
              make("th", {scope: "colgroup", colspan: "2"}, name))),
          make("tr", {role: "row"}, changes.map(({state}) =>
              make("th", {scope: "col"}, states[state])))),
      make("tbody", {}, changes.map((row) => make("tr", {role: "row"},
          make("th", {scope: "row"}, row.title),
          changes.map((column) => showCell(row, column))))));
  find("matrix").querySelector("button").tabIndex = 0;
}

const steps = {ArrowUp: [-1, 0], ArrowDown: [1, 0], ArrowLeft: [0, -1], ArrowRight: [0, 1]};

// The next cell in a direction, past the empty ones.
function neighbour(cell, [down, right]) {
  const {rows: lines} = find("matrix").tBodies[0];
  let row = cell.closest("tr").sectionRowIndex;
  let column = cell.closest("td").cellIndex;
  while (true) {
    row += down;
    column += right;
    const place = lines[row]?.cells[column];
    const button = place?.querySelector("button");
    if (button || !place) return button;
  }
}

function watchMatrix() {
  find("matrix").addEventListener("keydown", (event) => {
    if (!steps[event.key]) return;
    event.preventDefault();
    const next = neighbour(event.target, steps[event.key]);
    if (!next) return;
    event.target.tabIndex = -1;
    next.tabIndex = 0;
    next.focus();
  });
  find("matrix").addEventListener("click", ({target}) => {
    const played = target.closest("button")?.dataset.played;
    if (!played) return;
    [...played].forEach((state, part) => {
      document.querySelector(`[name=part-${part}][value="${state}"]`).checked = true;
    });
    showPlayed();
  });
}

async function main() {
  await engine.start();
  watchTabs();
  watchInput();
  showSwitches();
  showMatrix();
  showPlayed();
  watchMatrix();
  // A browser brings back what stood here before the page was loaded again.
  if (find("text").value) showAll(utf8.encode(find("text").value));
  document.documentElement.dataset.ready = "";
}

main().catch((error) => {
  find("trouble").textContent = `This browser cannot run the page: ${error.message}`;
  find("trouble").hidden = false;
});
