// Whether a host loads a capture, what it will not have then, and the command to run next.

const VERDICTS = [
  {name: "loads", sign: "\u2714", style: "good"},
  {name: "loads with problems", sign: "\u25b2", style: "notable"},
  {name: "loads in part", sign: "\u25b2", style: "notable"},
  {name: "does not load", sign: "\u2716", style: "bad"},
  {name: "can't be read", sign: "?", style: "bad"},
];
const [LOADS, LOADS_WITH_PROBLEMS, LOADS_IN_PART, DOES_NOT_LOAD, UNREADABLE] = VERDICTS;

function verdictOf({check}) {
  if (!check || check.findings.some(({id}) => id === "F-UNREADABLE")) {
    return UNREADABLE;
  }
  if (!check.loads) {
    return DOES_NOT_LOAD;
  }
  return check.missing.length > 0 ? LOADS_IN_PART : check.errors + check.warnings > 0 ? LOADS_WITH_PROBLEMS : LOADS;
}

function verdictMark(verdict) {
  return styled(verdict.style, `${verdict.sign} ${verdict.name}`);
}

// "Does not load: there is no ...; a host has no properties, ..."
function verdictSentence(capture) {
  const verdict = verdictOf(capture);
  if (verdict === UNREADABLE) {
    return `Can't be read: ${capture.check?.findings[0]?.what ?? capture.why}.`;
  }
  const begin = capture.check.verdict[0].toUpperCase() + capture.check.verdict.slice(1);
  switch (verdict) {
    case LOADS:
      return `${begin}; nothing is missing.`;
    case LOADS_WITH_PROBLEMS:
      return `${begin}; ${countsOf(capture.check, ["error", "warning"])}.`;
    case LOADS_IN_PART:
      return `${begin.replace(/ on this machine$/, " on the machine of the report")}.`;
    default:
      return `${begin}; missing then: ${listed(capture.check.missing)}.`;
  }
}

// "1 error and 2 notes", or nothing.
function countsOf(check, severities) {
  return listed(severities.filter((severity) => check[`${severity}s`] > 0)
                    .map((severity) => counted(check[`${severity}s`], severity)));
}

function listed(words) {
  return words.length < 2 ? words.join("") : `${words.slice(0, -1).join(", ")} and ${words.at(-1)}`;
}

function nextCommand(capture) {
  return sortedFindings(capture).find(({severity, next}) => severity !== "note" && next !== null)?.next ?? null;
}

function nextStep(capture) {
  const next = nextCommand(capture);
  if (next !== null) {
    return [
      make("span", null, "Next: "), command(next),
      / (NEW|GOOD|OLD|NAME|DIR)\b|=(NEW|VALUE)\b/.test(next) ? "Words in capitals are yours to fill in." : null
    ];
  }
  return verdictOf(capture) === LOADS ? "Next: nothing to do." :
                                        "Next: no command mends what was found; see the findings.";
}

function verdictPart(capture) {
  const verdict = verdictOf(capture);
  return make(
      "div", {className: `verdict ${verdict.style}`, role: "status"},
      make(
          "p", {className: "sentence"}, styled(verdict.style, `${verdict.sign} `),
          make("strong", null, verdictSentence(capture))),
      make("p", {className: "command"}, nextStep(capture)),
      capture.check && make("p", null, countsOf(capture.check, SEVERITIES) || "nothing found"));
}
