// Whether a host loads a capture, what it will not have then, and the command to run next.

const VERDICTS = [
  {name: "loads", sign: "\u2714", style: "good"},
  {name: "loads in part", sign: "\u25b2", style: "notable"},
  {name: "does not load", sign: "\u2716", style: "bad"},
  {name: "can't be read", sign: "?", style: "bad"},
];

function verdictOf({check}) {
  if (!check || check.findings.some(({id}) => id === "F-UNREADABLE")) {
    return VERDICTS[3];
  }
  if (!check.loads) {
    return VERDICTS[2];
  }
  return VERDICTS[check.missing.length > 0 ? 1 : 0];
}

function verdictMark(verdict) {
  return styled(verdict.style, `${verdict.sign} ${verdict.name}`);
}

// "Does not load: there is no ...; a host has no properties, ..."
function verdictSentence(capture) {
  if (verdictOf(capture) === VERDICTS[3]) {
    return `Can't be read: ${capture.check?.findings[0]?.what ?? capture.why}.`;
  }
  const {loads, missing, verdict} = capture.check;
  const begin = verdict[0].toUpperCase() + verdict.slice(1);
  return loads && missing.length > 0 ? `${begin}.` :
      loads ? `${begin}; nothing is missing.` :
              `${begin}; missing then: ${listed(missing)}.`;
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
  const isDone =
      verdictOf(capture) === VERDICTS[0] && !sortedFindings(capture).some(({severity}) => severity !== "note");
  return isDone ? "Next: nothing to do." : "Next: no command mends what was found; see the findings.";
}

function verdictPart(capture) {
  const verdict = verdictOf(capture);
  const counts = capture.check && SEVERITIES.map((severity) => [severity, capture.check[`${severity}s`]]);
  return make(
      "div", {className: `verdict ${verdict.style}`, role: "status"},
      make(
          "p", {className: "sentence"}, styled(verdict.style, `${verdict.sign} `),
          make("strong", null, verdictSentence(capture))),
      make("p", {className: "command"}, nextStep(capture)),
      counts &&
          make(
              "p", null,
              listed(counts.filter(([, count]) => count > 0).map(([severity, count]) => counted(count, severity))) ||
                  "nothing found"));
}
