// Findings with their places, what a reader does and what mends them; earlier configurations as differences.

class FindingList {
  // `link` as for the configuration.
  constructor(capture, link) {
    this.items = new Map();
    const findings = sortedFindings(capture);
    const items = findings.map((finding) => {
      const item = this.item(finding, link);
      this.items.set(finding, item);
      return item;
    });
    const more = (capture.check?.more ??
                  []).map(({id, count}) => make("li", null, `${id}: ${count.toLocaleString("en")} more of this kind`));
    this.element = part(
        `Findings (${findings.length + sum((capture.check?.more ?? []).map(({count}) => count))})`,
        findings.length > 0 ? make("ul", {className: "plain"}, items, more) : make("p", {className: "quiet"}, "None."));
  }

  item(finding, link) {
    const line = finding.line === null ? "" : `, line ${finding.line}`;
    const name = finding.section ?? "the file";
    const place =
        finding.offset === null ? `${name}${line}` : link(finding.offset, `${name} at ${finding.offset}${line}`);
    return make(
        "li", {tabIndex: -1}, severityMark(finding.severity), " ", styled("mono", finding.id), " ", place,
        make("div", null, finding.what), make("div", {className: "quiet"}, `reader: ${finding.reader}`),
        finding.next && make("div", {className: "command"}, "next: ", command(finding.next)));
  }

  // Shows the first and marks all of them.
  choose(findings) {
    goTo(this.items.get(findings[0]));
    findings.forEach((finding) => this.items.get(finding).classList.add("chosen"));
  }
}

function differenceKey({kind, item, field}) {
  return JSON.stringify([kind, item, field]);
}

// From the differences of two configurations to the one in force, the step from the earlier to the later one.
function step(earlier, later) {
  const before = new Map(earlier.map((each) => [differenceKey(each), each]));
  const after = new Map(later.map((each) => [differenceKey(each), each]));
  const changes = [];
  for (const key of new Set([...before.keys(), ...after.keys()])) {
    const each = before.get(key) ?? after.get(key);
    const left = (before.get(key) ? before.get(key).left : after.get(key).right) ?? "not there";
    const right = (after.get(key) ? after.get(key).left : before.get(key).right) ?? "not there";
    if (left !== right) {
      changes.push({...each, left, right});
    }
  }
  return changes;
}

function changeItem({kind, item, field, left, right}) {
  const what = kind === "property" ? item : `${kind} ${item}${field === null ? "" : ` ${field}`}`;
  return make("li", null, styled("mono", what), ": ", styled("name", left), " \u2192 ", styled("changed name", right));
}

// `file` is a word of the command line, null where no command would take the file.
function historyItem(entry, configurations, file, link) {
  const wasInForce =
      entry.was_in_force && configurations.filter((other) => other.section === entry.section && other.was_in_force);
  const before = wasInForce && wasInForce.filter(({number}) => number < entry.number).at(-1);
  const state = entry.state === "current" ? "in force" : entry.was_in_force ? "retired" : "never in force";
  let words = "the first one";
  let changes = [];
  if (!entry.was_in_force) {
    changes = (entry.differences ??
               []).map((each) => ({...each, left: each.right ?? "not there", right: each.left ?? "not there"}));
    words = "against the one in force";
  } else if (before) {
    changes = step(before.differences ?? [], entry.differences ?? []);
    words = `against number ${before.number}`;
  }
  return make(
      "li", null, make("strong", null, `${entry.number} ${entry.section}`), ` ${state}, `,
      link(entry.offset, `at ${entry.offset}`),
      `, ${sizeInWords(Number(entry.size))}; ${words}${
          changes.length === 0 && words !== "the first one" ? ": the same" : ""}`,
      changes.length > 0 ? make("ul", null, changes.map(changeItem)) : null,
      entry.state === "current" || file === null ?
          null :
          make("div", {className: "command"}, "back to it: ", command(`stmdcm restore ${file} ${entry.number}`)));
}

function historyPart(capture, link) {
  const configurations = capture.history?.configurations ?? [];
  const word = capture.sections?.whole ? capture.word : null;
  const newestFirst = [...configurations].sort((a, b) => b.number - a.number);
  return capture.history &&
      part(`History (${configurations.length})`,
           make(
               "ul", {className: "plain"}, newestFirst.map((entry) => historyItem(entry, configurations, word, link))));
}
