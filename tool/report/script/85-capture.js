// The page of one capture.

function capturePage(capture) {
  const sections = capture.sections?.sections ?? [];
  const sectionAt = (offset) => sections.findLastIndex((section) => Number(section.offset) <= Number(offset));
  const showSection = (index) => {
    const row = rows.row(index);
    goTo(row.querySelector("button"), row);
  };
  const link = (offset, words) =>
      (picture && sectionAt(offset) >= 0 ?
           button("link", () => picture.choose(sectionAt(offset)), words, SHOW_IN_PICTURE) :
           words);
  const picture = capture.sections && new Picture(capture, showSection, (chosen) => findings.choose(chosen));
  const bySection = new Map();
  sortedFindings(capture).filter(({offset}) => offset !== null).forEach((finding) => {
    const index = sectionAt(finding.offset);
    bySection.set(index, [...(bySection.get(index) ?? []), finding]);
  });
  const rows = capture.sections &&
      sectionsTable(
                   capture, (index) => picture.choose(index), (index) => bySection.get(index) ?? [],
                   (chosen) => findings.choose(chosen));
  const findings = new FindingList(capture, link);
  return [
    make("h1", null, capture.file),
    verdictPart(capture),
    picture?.element,
    make(
        "div", {className: "parts"}, part("Configuration", propertiesPart(capture, link)),
        make("div", {className: "across"}, useCasesPart(capture), imagesPart(capture)),
        make("div", {className: "beside"}, findings.element, historyPart(capture, link)),
        make("div", {className: "across"}, rows?.part)),
  ];
}
