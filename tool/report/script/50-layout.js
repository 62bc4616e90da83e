// What lies where in a capture, as numbers: the picture and the table of sections are drawn of these.

const CONFIGURATION_SECTIONS = ["DCM_COMMON", "DEVID", "STMDECODERINFO", "IMAGE_PINS"];

function isConfiguration({name, live_version: version}) {
  return CONFIGURATION_SECTIONS.includes(name) && version === 1;
}

// By how much they ask for a look, so that of many in one place the last one shows.
const PART_KINDS = [
  {style: "data", words: "read: anything else, such as the trace itself"},
  {style: "live", words: "live: configuration in force"},
  {style: "shadowed", words: "shadowed: an older one is read"},
  {style: "retired", words: "retired: kept as history"},
  {style: "uncovered", words: "belongs to no section"},
  {style: "unreachable", words: "unreachable: a search ends before it"},
  {style: "missing", words: "missing: stated, but behind the end of the file"},
];

function kindOf(section) {
  const style = section.use !== "read" ? section.use : isConfiguration(section) ? "live" : "data";
  return PART_KINDS.findIndex((kind) => kind.style === style);
}

const UNCOVERED = 4;
const MISSING = 6;
// What is missing may be far more than what is there.
const MOST_MISSING = 0.15;

// Parts are {begin, end, kind, index, label}, in the order of the file; without an index they are no section.
function layoutOf(document) {
  const size = Number(document.size);
  const parts = document.sections.map((section, index) => {
    const begin = Number(section.offset);
    const end = Math.min(Math.max(begin + section.length, Number(section.payload_offset)), size);
    return {begin, end, kind: kindOf(section), index, label: section.name || "(no name)"};
  });
  const trailing = Number(document.trailing.length);
  if (trailing > 0) {
    const begin = Number(document.trailing.offset);
    parts.push({begin, end: begin + trailing, kind: UNCOVERED, label: `${counted(trailing, "byte")} of no section`});
  }
  const missing = Math.max(0, ...document.sections.slice(-1).map((last) => Number(last.offset) + last.length - size));
  const end = size + Math.min(missing, Math.ceil(size * MOST_MISSING));
  if (missing > 0) {
    parts.push(
        {begin: size, end, kind: MISSING, label: `${sizeInWords(missing)} missing`, isCut: end < size + missing});
  }
  return {parts, size, end: Math.max(end, 1)};
}

// The parts that small ones are found in: configuration and damage. The whole file where that is no small piece of it.
function firstWindow({parts, end}) {
  const notable = parts.filter(({kind}) => PART_KINDS[kind].style !== "data");
  const from = notable.reduce((least, {begin}) => Math.min(least, begin), end);
  const to = notable.reduce((most, part) => Math.max(most, part.end), 0);
  return to > from && to - from < end / 4 ? widened({from, to}, 1.06, end) : {from: 0, to: end};
}

const SMALLEST_WINDOW = 32;

function widened({from, to}, factor, end) {
  const width = Math.min(Math.max((to - from) * factor, SMALLEST_WINDOW), end);
  const begin = Math.min(Math.max((from + to - width) / 2, 0), end - width);
  return {from: begin, to: begin + width};
}

function moved({from, to}, distance, end) {
  const begin = Math.min(Math.max(from + distance, 0), end - (to - from));
  return {from: begin, to: begin + (to - from)};
}

// Those of the window, in pixels. Neighbours too narrow to be told apart become one.
function drawn(layout, {from, to}, width) {
  const narrow = 3;
  const scale = width / (to - from);
  const shown = [];
  for (const part of layout.parts) {
    if (part.end <= from || part.begin >= to) {
      continue;
    }
    const left = (Math.max(part.begin, from) - from) * scale;
    const right = (Math.min(part.end, to) - from) * scale;
    const last = shown.at(-1);
    if (last && right - left < narrow && last.right - last.left < narrow && left - last.right < 1) {
      Object.assign(last, {right, kind: Math.max(last.kind, part.kind), last: part, count: last.count + 1});
    } else {
      shown.push({left, right, kind: part.kind, first: part, last: part, count: 1});
    }
  }
  return shown;
}
