// A pattern between its parents and its children, as a picture that one can walk:
// by links, or by arrows among them.

const FEW = 6; // relatives shown before all are asked for

function showLattice(pattern) {
  const box = byId("lattice");
  box.hidden = !data.has_parents;
  if (box.hidden) return;
  box.replaceChildren(
    drawn("svg", { "aria-hidden": "true" }),
    level("parents", pattern, pattern.parents, pattern.outside[0]),
    make("div", { class: "level" }, make("div", { class: "card centre" },
      picture(pattern, true), make("b", {}, pattern.id), ` in ${whole(pattern.support)}`)),
    level("children", pattern, pattern.children, pattern.outside[1]),
  );
  drawLines();
}

function level(kind, pattern, relatives, missing) {
  const sorted = relatives.map((at) => patterns[at])
    .sort((a, b) => b.support - a.support || a.at - b.at);
  const count = sorted.length + missing;
  const one = kind === "parents" ? "parent" : "child";
  let text = `${whole(count)} ${count === 1 ? one : kind}`;
  if (missing) text += `, ${whole(missing)} of them not in this page`;
  if (kind === "parents" && pattern.size === 1) text = "no parents: a single edge";
  const few = make("span", {}, `, here the ${FEW} with the largest support`);
  const list = make("ul", { class: kind });
  const add = (some) => list.append(...some.map((other) => make("li", {}, card(other))));
  add(sorted.slice(0, FEW));
  const whole_level = make("div", { class: "level" }, make("p", {}, text,
    sorted.length > FEW ? few : ""), list);
  if (sorted.length > FEW) {
    const more = make("button", { type: "button" }, `All ${sorted.length} ${kind}`);
    more.addEventListener("click", () => {
      const rest = sorted.slice(FEW);
      add(rest);
      more.remove();
      few.remove();
      list.children[FEW].querySelector("a").focus();
      drawLines();
    });
    whole_level.append(more);
  }
  return whole_level;
}

function card(pattern) {
  return make("a", { class: "card", href: `#${pattern.id}`, "data-id": pattern.id },
    picture(pattern), make("b", {}, pattern.id), ` in ${whole(pattern.support)}`);
}

// Lines from the cards to the one in the middle.
function drawLines() {
  const box = byId("lattice");
  const svg = box.querySelector(":scope > svg");
  if (!svg) return;
  const origin = box.getBoundingClientRect();
  const centre = box.querySelector(".centre").getBoundingClientRect();
  const middle = centre.left + centre.width / 2 - origin.left;
  const lines = [...box.querySelectorAll("a.card")].map((element) => {
    const own = element.getBoundingClientRect();
    const isAbove = element.closest(".parents") !== null;
    return drawn("line", {
      x1: own.left + own.width / 2 - origin.left,
      y1: (isAbove ? own.bottom : own.top) - origin.top,
      x2: middle,
      y2: (isAbove ? centre.top : centre.bottom) - origin.top,
      stroke: "#999",
    });
  });
  svg.replaceChildren(...lines);
}

// Lines are where the cards are, which on paper must stay where they were.
function keepWidth(isKept) {
  const box = byId("lattice");
  box.style.width = isKept && !box.hidden ? `${box.offsetWidth}px` : "";
}

function walkLattice(event) {
  const links = (kind) => [...document.querySelectorAll(`#lattice .${kind} a`)];
  const isRelative = event.target.closest("#lattice a") !== null;
  const row = event.target.closest(".children") ? links("children") : links("parents");
  const at = row.indexOf(event.target);
  const next = {
    ArrowUp: links("parents")[0],
    ArrowDown: links("children")[0],
    ArrowLeft: isRelative ? row[at - 1] : undefined,
    ArrowRight: isRelative ? row[at + 1] : undefined,
  }[event.key];
  if (!next) return;
  event.preventDefault();
  next.focus();
}
