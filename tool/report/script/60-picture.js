// The picture of a capture: the whole file as a bar, a piece of it enlarged, and the findings pinned to their places.

class Picture {
  // `onSection(index)` and `onFindings(findings)` are told what was chosen.
  constructor(capture, onSection, onFindings) {
    this.capture = capture;
    this.layout = layoutOf(capture.sections);
    this.window = firstWindow(this.layout);
    this.chosen = -1;
    this.onSection = onSection;
    this.onFindings = onFindings;
    this.whole =
        make("div", {className: "bar whole", "aria-hidden": "true", on: {click: (event) => this.center(event)}});
    this.pins = make("div", {className: "pins"});
    this.near = make("div", {
      className: "bar near",
      role: "group",
      "aria-label": "Sections; arrow keys move, Enter goes to the row",
      on: {keydown: (event) => this.obey(event)}
    });
    this.scale = make("div", {className: "scale", "aria-hidden": "true"});
    this.range = make("span", {className: "quiet", role: "status"});
    this.element = part(
        "Picture",
        make("div", {className: "picture"}, this.whole, this.pins, this.near, this.scale, this.tools(), this.legend()));
    new ResizeObserver(() => this.draw()).observe(this.near);
  }

  tools() {
    const tool = (label, title, act) => named(button("", () => this.look(act()), label), title);
    const end = this.layout.end;
    const width = () => this.window.to - this.window.from;
    return make(
        "div", {className: "tools"}, tool("+", "Zoom in", () => widened(this.window, 1 / 2, end)),
        tool("\u2212", "Zoom out", () => widened(this.window, 2, end)),
        tool("\u25c0", "Towards the beginning", () => moved(this.window, -width() / 2, end)),
        tool("\u25b6", "Towards the end", () => moved(this.window, width() / 2, end)),
        tool("Whole file", "The whole file", () => ({from: 0, to: end})),
        tool("Configuration", "Configuration and damage", () => firstWindow(this.layout)), this.range);
  }

  legend() {
    const items = PART_KINDS.map(({style, words}, kind) => {
      const parts = this.layout.parts.filter((each) => each.kind === kind);
      return parts.length > 0 &&
          make("li", null, make("span", {className: `part swatch ${style}`}),
               `${words} (${
                   kind === MISSING ? "not in the file" :
                                      sizeInWords(sum(parts.map(({begin, end}) => end - begin)))})`);
    });
    return make("ul", {className: "legend", "aria-label": "What the patterns mean"}, items.filter(Boolean));
  }

  look(window) {
    this.window = window;
    this.draw();
  }

  center(event) {
    const box = this.whole.getBoundingClientRect();
    const place = (event.clientX - box.left) / box.width * this.layout.end;
    this.look(moved(this.window, place - (this.window.from + this.window.to) / 2, this.layout.end));
  }

  // Zooms to a section that would be too narrow, and goes to it.
  choose(index) {
    const {begin, end} = this.layout.parts[index];
    const {from, to} = this.window;
    if (begin < from || end > to || end - begin < (to - from) / 20) {
      this.window = widened({from: begin, to: end}, 4, this.layout.end);
    }
    this.chosen = index;
    this.draw();
    const element = this.near.querySelector(".chosen") ?? this.near.querySelector(".part");
    goTo(element);
  }

  draw() {
    const width = this.near.clientWidth;
    const hadFocus = this.near.contains(document.activeElement);
    const {from, to} = this.window;
    const end = this.layout.end;
    const percent = (value) => `${value / width * 100}%`;
    const place = (element, {left, right}) => {
      element.style.left = percent(left);
      element.style.width = percent(right - left);
      return element;
    };
    const all = drawn(this.layout, {from: 0, to: end}, width);
    const frame = make("div", {className: "frame"});
    replace(
        this.whole, all.map((shown) => place(make("div", {className: `part ${PART_KINDS[shown.kind].style}`}), shown)),
        to - from < end ? place(frame, {left: from / end * width, right: to / end * width}) : null);
    const shown = drawn(this.layout, this.window, width);
    replace(this.near, shown.map((each) => place(this.button(each), each)));
    const entry = this.near.querySelector(".chosen") ?? this.near.firstElementChild;
    entry?.setAttribute("tabindex", "0");
    if (hadFocus) {
      entry?.focus();
    }
    this.drawScale(width);
    this.drawPins(width);
    replace(
        this.range,
        `${Math.floor(from).toLocaleString("en")} to ${Math.ceil(to).toLocaleString("en")} of ${
            this.layout.size.toLocaleString("en")} bytes`);
  }

  button(shown) {
    const {first, last, count, kind} = shown;
    const words = PART_KINDS[kind].words.split(":")[0];
    const label = count > 1 ? `${counted(count, "section")}, ${first.label} to ${last.label}` : first.label;
    const title = `${label}, ${words}, ${kind === MISSING ? "from" : "at"} ${first.begin}, ${
        first.isCut ? "not to scale" : counted(last.end - first.begin, "byte")}`;
    const isChosen = count === 1 && first.index === this.chosen && first.index !== undefined;
    const act = () => {
      if (count > 1) {
        this.look(widened({from: first.begin, to: last.end}, 1.2, this.layout.end));
      } else if (first.index !== undefined) {
        this.chosen = first.index;
        this.onSection(first.index);
      }
    };
    const style = `part ${PART_KINDS[kind].style}${isChosen ? " chosen" : ""}`;
    const element = named(button(style, act, shown.right - shown.left > 36 ? styled("", label) : null), title);
    element.tabIndex = -1;
    return element;
  }

  obey(event) {
    const parts = [...this.near.children];
    const at = parts.indexOf(document.activeElement);
    const goal = {ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: parts.length - 1}[event.key];
    const window = {"+": [1 / 2], "-": [2], 0: [Infinity]}[event.key];
    if (goal !== undefined && parts[goal]) {
      parts[goal].focus();
    } else if (window) {
      this.look(widened(this.window, window[0], this.layout.end));
    } else if (goal === undefined) {
      return;
    }
    event.preventDefault();
  }

  drawScale(width) {
    const {from, to} = this.window;
    const rough = (to - from) * 110 / width;
    const power = 10 ** Math.floor(Math.log10(rough));
    const step = Math.max(1, [1, 2, 5, 10].find((factor) => factor * power >= rough) * power);
    const marks = [];
    for (let value = Math.ceil(from / step) * step; value < to; value += step) {
      const mark = make("span", null, value.toLocaleString("en"));
      mark.style.left = `${(value - from) / (to - from) * 100}%`;
      marks.push(mark);
    }
    replace(this.scale, marks);
  }

  // Those too close to each other share a pin, which tells how many they are and how bad the worst is.
  drawPins(width) {
    const {from, to} = this.window;
    const close = 34;
    const places = sortedFindings(this.capture)
                       .filter(({offset}) => offset !== null && offset >= from && offset <= to)
                       .map((finding) => ({finding, left: (Number(finding.offset) - from) / (to - from) * width}))
                       .sort((a, b) => a.left - b.left);
    const pins = [];
    for (const {finding, left} of places) {
      if (pins.length > 0 && left - pins.at(-1).left < close) {
        pins.at(-1).findings.push(finding);
      } else {
        pins.push({left, findings: [finding]});
      }
    }
    replace(this.pins, pins.map((pin) => this.pin(pin, width)));
  }

  pin({left, findings}, width) {
    const worst = SEVERITIES.find((severity) => findings.some((finding) => finding.severity === severity));
    const {sign, style} = SEVERITY_MARKS[worst];
    const title = `${counted(findings.length, "finding")} here: ${[...new Set(findings.map(({id}) => id))].join(", ")}`;
    const label = `${sign}${findings.length > 1 ? ` ${findings.length}` : ""}`;
    const element = named(button(`pin ${style}`, () => this.onFindings(findings), label), title);
    element.style.left = `${Math.min(Math.max(left, 14), width - 14) / width * 100}%`;
    return element;
  }
}
