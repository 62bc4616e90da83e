// Every text that is to be seen, with the contrast of its colour to what is behind it (WCAG 2.1, 1.4.3).
const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
const luminance = (colour) => {
  const [r, g, b] = channels(colour)
                        .slice(0, 3)
                        .map((value) => value / 255)
                        .map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const isClear = (colour) => channels(colour)[3] === 0;
const contrast = (a, b) => {
  const [light, dark] = [luminance(a), luminance(b)].sort((x, y) => y - x);
  return (light + 0.05) / (dark + 0.05);
};
const behind = (element) => {
  for (let each = element; each; each = each.parentElement) {
    const style = getComputedStyle(each);
    if (style.backgroundImage !== "none") {
      return null;  // a text on a pattern
    }
    if (!isClear(style.backgroundColor)) {
      return style.backgroundColor;
    }
  }
  return null;
};
const found = [];
const walker = document.createTreeWalker(document.getElementById("view"), NodeFilter.SHOW_TEXT);
while (walker.nextNode()) {
  const element = walker.currentNode.parentElement;
  if (walker.currentNode.data.trim() && element.checkVisibility({checkOpacity: true, checkVisibilityCSS: true})) {
    const paper = behind(element);
    found.push({
      text: walker.currentNode.data,
      button: element.closest("button")?.className ?? null,
      contrast: paper && contrast(getComputedStyle(element).color, paper)
    });
  }
}
// What tells the parts of the picture apart has 3:1 (1.4.11).
const root = getComputedStyle(document.documentElement);
const drawn = ["--hatch", "--lost", "--live", "--ink"].map((name) => {
  const probe = document.createElement("i");
  probe.style.color = root.getPropertyValue(name);
  document.body.append(probe);
  const colour = getComputedStyle(probe).color;
  probe.remove();
  return {text: name, contrast: contrast(colour, root.backgroundColor) * 1.5};
});
const clipped = [...document.querySelectorAll(".scroll")].filter((each) => each.scrollWidth > each.clientWidth).length;
return {texts: [...found, ...drawn], width: document.documentElement.scrollWidth, clipped};
