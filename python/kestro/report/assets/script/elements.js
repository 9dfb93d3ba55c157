// Elements made from names, attributes and children; text stays text.

const byId = (id) => document.getElementById(id);

function make(name, attributes = {}, ...children) {
  return filled(document.createElement(name), attributes, children);
}

function drawn(name, attributes = {}, ...children) {
  const space = "http://www.w3.org/2000/svg";
  return filled(document.createElementNS(space, name), attributes, children);
}

function filled(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, "");
    else if (value !== false && value !== null) element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

// The svg element that a text is; scripts in it would not run.
function parsed(text) {
  const root = new DOMParser().parseFromString(text, "image/svg+xml").documentElement;
  root.removeAttribute("width");
  root.removeAttribute("height");
  return document.importNode(root, true);
}
