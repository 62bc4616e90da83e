// Which of the pages is shown: its number stands behind the address, so the browser's way back leads back.

const view = document.getElementById("view");
let front = null;

function chosenIndex() {
  const number = Number(/^#capture-(\d+)$/.exec(location.hash)?.[1] ?? 0);
  return blocks.length === 1 ? 0 : Math.min(number, blocks.length) - 1;
}

function navigation(index) {
  const to = (number, words) =>
      (number >= 0 && number < blocks.length ? make("a", {href: `#capture-${number + 1}`}, words) : null);
  return blocks.length < 2 || index < 0 ?
      null :
      make(
          "nav", {className: "top"}, make("a", {href: "#"}, `All ${blocks.length} captures`),
          to(index - 1, "\u25c0 previous"), `${index + 1} of ${blocks.length}`, to(index + 1, "next \u25b6"));
}

function showPage() {
  const index = chosenIndex();
  const top = make(
      "header", {className: "top quiet"}, make("span", null, `stmdcm ${about.version} report`),
      make("span", null, `made ${time(about.made_utc)}`));
  if (index < 0) {
    front ??= new CapturesTable();
    replace(view, top, make("main", null, blocks.length > 0 ? front.elements() : make("p", null, "No captures.")));
  } else {
    replace(view, top, navigation(index), make("main", null, capturePage(captureAt(index))));
  }
  document.title = visible(
      index < 0 ? `${counted(blocks.length, "capture")}, stmdcm report` : `${captureAt(index).file}, stmdcm report`);
  scrollTo(0, 0);
}

// The number of a capture's row is where the way back leads.
addEventListener("hashchange", (event) => {
  const number = /#capture-(\d+)$/.exec(event.oldURL)?.[1];
  showPage();
  view.querySelector(number && chosenIndex() < 0 ? `a[href="#capture-${number}"]` : "main a, main button")?.focus();
});
addEventListener("keydown", (event) => {
  const search = document.getElementById("search");
  if (event.key === "/" && search && document.activeElement !== search) {
    search.focus();
    event.preventDefault();
  }
});
showPage();
