"use strict";
// Elements are made of text nodes alone: nothing that a capture says is ever read as markup.

// Control characters, and those that change the direction of a text: a name must not look like another one.
const HIDDEN = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff\ufff9-\ufffb]/g;

function visible(text) {
  return String(text).replace(HIDDEN, (sign) => `\\u${sign.charCodeAt(0).toString(16).padStart(4, "0")}`);
}

// Children are elements, texts, lists of these, or null for nothing. An option is a property, or an attribute where its
// name has a dash; `on` has the handlers.
function make(tag, options, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(options ?? {})) {
    if (name === "on") {
      Object.entries(value).forEach(([event, handler]) => element.addEventListener(event, handler));
    } else if (name.includes("-")) {
      element.setAttribute(name, visible(value));
    } else {
      element[name] = value;
    }
  }
  put(element, children);
  return element;
}

function put(element, children) {
  for (const child of children.flat(Infinity)) {
    if (child !== null && child !== undefined && child !== "") {
      element.append(child instanceof Node ? child : visible(child));
    }
  }
}

function replace(element, ...children) {
  element.replaceChildren();
  put(element, children);
}

// `columns` are {title, number, isTitle}: what a row is called by where there is no room for columns. A row is {cells,
// options}.
function table(columns, rows, options) {
  const head = columns.map(({title, number}) => make("th", {scope: "col", className: number ? "number" : ""}, title));
  return make(
      "div", {className: "scroll"},
      make(
          "table", options, make("thead", null, make("tr", null, head)),
          make("tbody", null, rows.map((row) => tableRow(columns, row)))));
}

function tableRow(columns, {cells, options}) {
  return make(
      "tr", options,
      columns.map(
          ({title, number, isTitle}, i) => make(
              "td",
              {className: [number && "number", isTitle && "title"].filter(Boolean).join(" "), "data-label": title},
              cells[i])));
}

function styled(className, ...children) {
  return make("span", {className}, ...children);
}

function button(className, act, label, title = "") {
  return make("button", {type: "button", className, title, on: {click: act}}, label);
}

// For a button whose label does not say enough.
function named(element, name) {
  element.title = visible(name);
  element.setAttribute("aria-label", visible(name));
  return element;
}

function part(title, ...children) {
  return make("section", null, make("h2", null, title), children);
}

// Goes to an element and shows which one it is.
function goTo(element, marked = element) {
  document.querySelectorAll(".chosen").forEach((other) => other.classList.remove("chosen"));
  marked.classList.add("chosen");
  marked.scrollIntoView({block: "nearest"});
  element.focus();
}

function copyButton(text) {
  const element = button("copy", async () => {
    element.textContent = await copy(text) ? "Copied" : "Press Ctrl+C";
  }, "Copy");
  return element;
}

async function copy(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {  // a browser that keeps it from files
    const field = make("textarea", {value: text});
    document.body.append(field);
    field.select();
    const isDone = document.execCommand("copy");
    field.remove();
    return isDone;
  }
}

function command(text) {
  return styled("command", make("code", null, text), copyButton(text));
}
