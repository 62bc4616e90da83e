// The configuration: what differs from the defaults first.

// `link(offset, words)` leads to the section at that offset.
function originOf(capture, name, link) {
  const origin = capture.origins.get(name);
  if (!origin) {
    return styled("quiet", "no host gets it");
  }
  const line = origin.line === null ? "" : `, line ${origin.line}`;
  const words = `${origin.source}${line}`;
  return styled("nowrap", origin.offset === null ? words : link(origin.offset, words));
}

function propertiesPart(capture, link) {
  const properties = capture.configuration?.properties;
  if (!properties) {
    return make(
        "p", {className: "quiet"},
        capture.why ? `Nothing could be read: ${capture.why}.` : "No properties could be read.");
  }
  const changed = properties.filter((property) => property.value !== property.default);
  const others = properties.filter((property) => property.value === property.default);
  const row = (property) => ({
    cells: [
      styled("mono", property.name), styled("changed", property.text), defaults.get(property.name)?.text,
      originOf(capture, property.name, link)
    ]
  });
  const columns = [{title: "Property", isTitle: true}, {title: "Value"}, {title: "Default"}, {title: "Comes from"}];
  const plain = (property) =>
      ({cells: [styled("mono", property.name), property.text, originOf(capture, property.name, link)]});
  return [
    make("h3", null, `Differs from the default (${changed.length})`),
    changed.length > 0 ? table(columns, changed.map(row)) : null,
    make("h3", null, `At the default (${others.length})`),
    others.length > 0 ?
        table([{title: "Property", isTitle: true}, {title: "Value"}, {title: "Comes from"}], others.map(plain)) :
        null,
  ];
}

const MONITOR_COLUMNS = [
  {title: "Job", number: true}, {title: "Module id", number: true}, {title: "Name"}, {title: "Probe"},
  {title: "Sample window", number: true}
];

function monitorCells({job, module_id: module, name, probe, sample_window: samples}) {
  return [job < 0 ? `${job} (none)` : job, module, name, probe, samples];
}

function formula({name, formula: text, unit, tag_number: tag, output_mask: mask}) {
  return make(
      "div", null, styled("mono", `${name} = ${text}`), unit ? ` [${unit}]` : "",
      styled("quiet", `, tag number ${tag}, output mask ${hexadecimal(mask)}`));
}

const USE_CASE_KINDS = [
  {
    key: "sc",
    title: "SC use cases",
    columns: [...MONITOR_COLUMNS, {title: "Suppress"}, {title: "Counters"}, {title: "Formulas"}],
    cells: (each) =>
        [...monitorCells(each), yesNo(each.suppress),
         each.counters.map(({number, text}) => make("div", {className: "mono"}, `#${number} ${text}`)),
         each.formulas.map(formula)]
  },
  {
    key: "cpt",
    title: "CPT use cases",
    columns: [
      ...MONITOR_COLUMNS, {title: "Clock rate"}, {title: "Divide factor", number: true}, {title: "Mode", number: true},
      {title: "Data options"}
    ],
    cells: (each) =>
        [...monitorCells(each), frequency(each.clock_rate), each.divide_factor, each.mode,
         hexadecimal(each.data_options)]
  },
  {
    key: "pmi_cmi",
    title: "PMI/CMI use cases",
    columns: [{title: "Source", isTitle: true}, {title: "Sample window", number: true}],
    cells: (each) => [each.source, each.sample_window]
  },
];

function useCasesPart(capture) {
  const kinds = capture.configuration?.use_cases;
  return kinds &&
      part("Use cases",
           USE_CASE_KINDS.map(
               ({key, title, columns, cells}) =>
                   [make("h3", null, `${title} (${kinds[key].length})`),
                    kinds[key].length > 0 ? table(columns, kinds[key].map((each) => ({cells: cells(each)}))) : null,
  ]));
}

const IMAGE_STYLES = {
  "as captured": "good",
  "same time, not proven": "",
  missing: "bad",
  "another image": "bad"
};
const IMAGE_SIGNS = {
  "as captured": "\u2714 ",
  "same time, not proven": "\u25cb ",
  missing: "\u2716 ",
  "another image": "\u2716 "
};

function identity(pin) {
  if (pin === null) {
    return styled("quiet", "not pinned: path and time are all that is known");
  }
  return [
    make("div", null, counted(Number(pin.size), "byte")),
    make("div", {className: "mono long"}, `SHA-256 ${pin.sha256}`),
    pin.build_id && make("div", {className: "mono long"}, `build-id ${pin.build_id}`)
  ];
}

function imagesPart({images}) {
  if (!images) {
    return null;
  }
  const state = (text) => styled(IMAGE_STYLES[text] ?? "notable", (IMAGE_SIGNS[text] ?? "\u25b2 ") + text);
  const row = (image) => ({
    cells: [
      styled("long name", image.name), styled("mono long", image.path), state(image.state), time(image.recorded_utc),
      time(image.modified_utc) || "\u2013", identity(image.pin)
    ]
  });
  const columns = [
    {title: "Image", isTitle: true}, {title: "Path"}, {title: "On the machine of the report"}, {title: "Recorded"},
    {title: "Modified there"}, {title: "Identity"}
  ];
  return part(`Program images (${images.length})`, images.length > 0 ? table(columns, images.map(row)) : null);
}
