// The row of sections as a table, a page at a time: a capture may have a million.

// A pager over rows that are made when they are shown.
class Pages {
  constructor(pageSize, columns, makeRow, options) {
    Object.assign(this, {pageSize, columns, makeRow, count: 0, page: 0});
    const framed = table(columns, [], options);
    this.table = framed.firstChild;
    this.words = make("span", {role: "status"});
    this.earlier = button("", () => this.turn(this.page - 1), "\u25c0 earlier");
    this.later = button("", () => this.turn(this.page + 1), "later \u25b6");
    this.bar = make("div", {className: "pager"}, this.earlier, this.words, this.later);
    this.element = make("div", null, this.bar, framed);
  }

  show(count) {
    this.count = count;
    this.turn(0);
  }

  turn(page) {
    this.page = page;
    const from = page * this.pageSize;
    const to = Math.min(from + this.pageSize, this.count);
    const rows = [];
    for (let i = from; i < to; ++i) {
      rows.push(tableRow(this.columns, this.makeRow(i)));
    }
    replace(this.table.tBodies[0], rows);
    this.bar.hidden = this.count <= this.pageSize;
    this.earlier.disabled = page === 0;
    this.later.disabled = to === this.count;
    replace(
        this.words,
        `rows ${(from + 1).toLocaleString("en")} to ${to.toLocaleString("en")} of ${this.count.toLocaleString("en")}`);
  }

  // The row of that number, on its page.
  row(index) {
    const page = Math.floor(index / this.pageSize);
    if (page !== this.page) {
      this.turn(page);
    }
    return this.table.tBodies[0].rows[index - page * this.pageSize];
  }
}

const SECTION_COLUMNS = [
  {title: "Section", isTitle: true}, {title: "Use"}, {title: "Offset", number: true}, {title: "Size", number: true},
  {title: "Payload", number: true}, {title: "Version", number: true}, {title: "Notes"}
];
const SHOW_IN_PICTURE = "Show it in the picture";
const SECTIONS_A_PAGE = 100;

// `findingsAt(index)` are those of a section, which `onFindings` is told of.
function sectionsTable({sections: {sections, size, more, search_ends: ends}}, onChoose, findingsAt, onFindings) {
  const problem = (section) => {
    if (section.problem === "torn") {
      return styled(
          "bad", `\u2716 torn: ${counted(Number(section.offset) + section.length - Number(size), "byte")} missing`);
    }
    return section.problem && styled("bad", "\u2716 its length is below that of its header");
  };
  const found = (findings) =>
      findings.length > 0 && button("link", () => onFindings(findings), counted(findings.length, "finding"));
  const row = (index) => {
    const section = sections[index];
    const name = button("link name", () => onChoose(index), section.name || "(no name)", SHOW_IN_PICTURE);
    return {
      cells: [
        name, section.use, section.offset, section.length.toLocaleString("en"),
        Number(section.payload_held).toLocaleString("en"), section.live_version,
        [problem(section) || null, " ", found(findingsAt(index)) || null]
      ]
    };
  };
  const pages = new Pages(SECTIONS_A_PAGE, SECTION_COLUMNS, row);
  pages.show(sections.length);
  const reason = ends.reason === "end of file" ?
      null :
      make("p", {className: "notable"}, `\u25b2 Every search ends at offset ${ends.offset}: ${ends.reason}.`);
  pages.part = part(
      `Sections (${sections.length.toLocaleString("en")})`, reason,
      more ? make("p", {className: "notable"}, "\u25b2 There are more than are listed.") : null, pages.element);
  return pages;
}
