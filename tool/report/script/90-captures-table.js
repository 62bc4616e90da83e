// Many captures: a table in front, which can be searched and sorted, and what differs between them.

const MOST_NAMED = 4;
const MOST_VALUES = 8;

// What of a configuration can differ, as texts by name.
function valuesOf({configuration, images}) {
  const values = new Map();
  configuration?.properties?.forEach(({name, text}) => values.set(name, text));
  Object.entries(configuration?.use_cases ?? {}).forEach(([kind, list]) => {
    values.set(`${kind.toUpperCase().replace("_", "/")} use cases`, String(list.length));
    list.forEach(
        (each) =>
            values.set(`use case ${each.source ?? `job ${each.job}, module ${each.module_id}`}`, JSON.stringify(each)));
  });
  images?.forEach(({name, path}) => values.set(`image ${name}`, path));
  return values;
}

function summaryOf(index) {
  const capture = readBlock(JSON.parse(blocks[index].textContent));
  const {check} = capture;
  return {
    index,
    file: capture.file,
    verdict: verdictOf(capture),
    sentence: verdictSentence(capture),
    errors: check?.errors ?? 0,
    warnings: check?.warnings ?? 0,
    ids: [...new Set((check?.findings ?? []).map(({id}) => id))],
    values: valuesOf(capture)
  };
}

// By name, how many captures have which value; the names alone of which there are several. The value that most have
// comes first, of as many the one that comes first.
function variety(summaries) {
  const readable = summaries.filter(({values}) => values.size > 0);
  const counts = new Map();
  for (const name of new Set(readable.flatMap(({values}) => [...values.keys()]))) {
    const of = new Map();
    readable.forEach((summary) => of.set(valueOf(summary, name), (of.get(valueOf(summary, name)) ?? 0) + 1));
    if (of.size > 1) {
      counts.set(name, withShortNames([...of].sort(([, a], [, b]) => b - a)));
    }
  }
  return counts;
}

function valueOf(summary, name) {
  return summary.values.get(name) ?? "not there";
}

// {value, count, words}: a use case is a text of many fields, of which it is enough to say that it is another one.
function withShortNames(counts) {
  let variants = 0;
  const areSeveral = counts.filter(([value]) => value.startsWith("{")).length > 1;
  return counts.map(
      ([value, count]) =>
          ({value,
            count,
            words: !value.startsWith("{") ? value :
                areSeveral                ? `variant ${++variants}` :
                                            "there"}));
}

function differencesOf(summary, varied) {
  return summary.values.size === 0 ?
      [] :
      [...varied]
          .filter(([name, [usual]]) => valueOf(summary, name) !== usual.value)
          .map(([name, values]) => ({name, words: wordsOf(summary, name, values), usual: values[0].words}));
}

function wordsOf(summary, name, values) {
  return values.find(({value}) => value === valueOf(summary, name)).words;
}

class CapturesTable {
  constructor() {
    this.all = blocks.map((block, index) => summaryOf(index));
    this.varied = variety(this.all);
    this.all.forEach((summary) => {
      summary.differences = differencesOf(summary, this.varied);
      const values = summary.values.size === 0 ?
          [] :
          [...this.varied].map(([name, of]) => `${name}=${wordsOf(summary, name, of)}`);
      summary.text = [
        summary.file, summary.verdict.name, summary.sentence, ...summary.ids, ...values, ""
      ].join("\n").toLowerCase();
      summary.values = null;
    });
    this.sorting = {column: 0, isFalling: false};
    this.columns = [
      {title: "No.", number: true, key: ({index}) => index},
      {title: "Capture", isTitle: true, key: ({file}) => file},
      {title: "Verdict", key: ({verdict}) => VERDICTS.indexOf(verdict)},
      {title: "Errors", number: true, key: ({errors}) => errors},
      {title: "Warnings", number: true, key: ({warnings}) => warnings},
      {title: "Differs from most in", key: ({differences}) => differences.length},
    ];
    this.pages = new Pages(1000, this.columns, (i) => this.row(this.shown[i]), {className: "sortable"});
    this.search = make("input", {type: "search", id: "search", on: {input: () => this.update()}});
    this.found = make("span", {role: "status"});
    this.prepareSorting();
    this.update();
  }

  prepareSorting() {
    [...this.pages.table.tHead.rows[0].cells].forEach((cell, column) => {
      replace(cell, button("value", () => this.sort(column), this.columns[column].title));
    });
  }

  sort(column) {
    this.sorting = {
      column,
      isFalling: this.sorting.column === column ? !this.sorting.isFalling : this.columns[column].number && column > 0
    };
    this.update();
  }

  update() {
    // "NAME=VALUE" means the whole value.
    const words = (this.search.value.toLowerCase().match(/"[^"]*"|\S+/g) ??
                   []).map((word) => (/^".*=.*"$/.test(word) ? `${word.slice(1, -1)}\n` : word.replaceAll("\"", "")));
    const {column, isFalling} = this.sorting;
    const key = this.columns[column].key;
    const order = (a, b) =>
        (typeof key(a) === "string" ? key(a).localeCompare(key(b), "en", {numeric: true}) : key(a) - key(b));
    this.shown = this.all.filter(({text}) => words.every((word) => text.includes(word)))
                     .sort((a, b) => (isFalling ? order(b, a) : order(a, b)) || a.index - b.index);
    [...this.pages.table.tHead.rows[0].cells].forEach((cell, i) => {
      cell.setAttribute("aria-sort", i !== column ? "none" : isFalling ? "descending" : "ascending");
      cell.firstChild.textContent = this.columns[i].title + (i !== column ? "" : isFalling ? " \u25bc" : " \u25b2");
    });
    this.pages.show(this.shown.length);
    replace(this.found, `${this.shown.length.toLocaleString("en")} of ${counted(this.all.length, "capture")}`);
  }

  row({index, file, verdict, sentence, errors, warnings, differences}) {
    const named =
        differences.slice(0, MOST_NAMED)
            .map(
                ({name, words, usual}) =>
                    make("div", null, `${name}: `, styled("changed", words), styled("quiet", ` (most: ${usual})`)));
    const more = differences.length - named.length;
    return {
      cells: [
        index + 1, make("a", {href: `#capture-${index + 1}`, className: "name long"}, file), verdictMark(verdict),
        errors, warnings, verdict === UNREADABLE ? sentence : [named, more > 0 ? `and ${more} more` : null]
      ]
    };
  }

  // What differs, each value a button that searches for it.
  varietyPart() {
    const rows = [...this.varied].map(
        ([name, values]) => ({
          cells: [
            styled("mono", name),
            make(
                "div", {className: "chips"},
                values.slice(0, MOST_VALUES)
                    .map(
                        ({words, count}) => button(
                            "value", () => this.searchFor(name, words), `${words} \u00d7 ${count}`, "Search for it")),
                values.length > MOST_VALUES ? make("span", null, `and ${values.length - MOST_VALUES} more`) : null)
          ]
        }));
    return part(
        "What differs between them",
        rows.length > 0 ? table([{title: "Setting"}, {title: "Values, and how many captures have them"}], rows) :
                          make("p", {className: "quiet"}, "Nothing."));
  }

  searchFor(name, words) {
    this.search.value = `"${name}=${words}"`;
    this.update();
    this.search.focus();
  }

  verdictCounts() {
    return make(
        "p", {className: "chips"},
        VERDICTS
            .map((verdict) => {
              const count = this.all.filter((each) => each.verdict === verdict).length;
              return count > 0 && make("span", null, verdictMark(verdict), ` ${count.toLocaleString("en")}`);
            })
            .filter(Boolean));
  }

  elements() {
    return [
      make("h1", null, counted(this.all.length, "capture")), this.verdictCounts(),
      make("p", null, make("label", {htmlFor: "search"}, "Search "), this.search, " ", this.found), this.pages.element,
      this.varietyPart()
    ];
  }
}
