// What the page holds: a block for each capture with its documents (docs/report.md), read when they are asked for.

const blocks = [...document.querySelectorAll("script.capture")];
const about = JSON.parse(document.getElementById("about").textContent);
const defaults = new Map(about.defaults.properties.map((property) => [property.name, property]));
let kept = {index: -1, capture: null};

function captureAt(index) {
  if (kept.index !== index) {
    kept = {index, capture: readBlock(JSON.parse(blocks[index].textContent))};
  }
  return kept.capture;
}

// Of what could not be had the document says why.
function readBlock(block) {
  const had = (name) => (block[name] && !block[name].failure ? block[name] : null);
  return {
    file: block.file ?? block.failure.file ?? "a file without a name",
    word: block.file_word,
    why: block.failure?.cause ?? block.show?.failure?.cause ?? "",
    check: had("check")?.files[0] ?? null,
    configuration: had("show")?.configuration ?? null,
    images: had("objects")?.object_files ?? had("show")?.configuration.object_files ?? null,
    sections: had("sections"),
    history: had("history"),
    origins: new Map((block.origins ?? []).map((origin) => [origin.name, origin])),
  };
}

const SEVERITIES = ["error", "warning", "note"];
const SEVERITY_MARKS = {
  error: {sign: "\u2716", style: "bad"},
  warning: {sign: "\u25b2", style: "notable"},
  note: {sign: "\u25cb", style: "quiet"},
};

function severityMark(severity) {
  const {sign, style} = SEVERITY_MARKS[severity];
  return styled(style, `${sign} ${severity}`);
}

// The worst first; of each severity in the order of the file.
function sortedFindings(capture) {
  const findings = capture.check?.findings ?? [];
  return SEVERITIES.flatMap((severity) => findings.filter((finding) => finding.severity === severity));
}
