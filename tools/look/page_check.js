// Evaluated in a page; gives what is wrong with it as a list of texts, each beginning with its kind.
// Contrast is that of WCAG 2: 4.5 at least between a text and the colours behind it.
(() => {
  const kLeastContrast = 4.5;
  const faults = [];
  const canvas = document.createElement("canvas").getContext("2d", {willReadFrequently: true});

  // Any CSS colour as red, green, blue and opacity, each from 0 to 1.
  const parsed = new Map();
  const color = text => {
    if (!parsed.has(text)) {
      canvas.clearRect(0, 0, 1, 1);
      canvas.fillStyle = text;
      canvas.fillRect(0, 0, 1, 1);
      parsed.set(text, [...canvas.getImageData(0, 0, 1, 1).data].map(byte => byte / 255));
    }
    return parsed.get(text);
  };
  const over = (top, below) =>
      [0, 1, 2].map(i => top[i] * top[3] + below[i] * (1 - top[3])).concat(1);
  const linear = value => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4;
  const luminance = ([red, green, blue]) =>
      0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
  const contrast = (one, other) => {
    const [low, high] = [luminance(one), luminance(other)].sort((a, b) => a - b);
    return (high + 0.05) / (low + 0.05);
  };

  const canvasColor = matchMedia("(prefers-color-scheme: dark)").matches ? [0, 0, 0, 1] : [1, 1, 1, 1];
  const background = element => {
    if (!element) return canvasColor;
    const own = color(getComputedStyle(element).backgroundColor);
    return own[3] === 1 ? own : over(own, background(element.parentElement));
  };
  const name = element => element.localName +
      (element.className ? "." + element.className.split(" ").join(".") : "");

  const checkText = (element, pseudo) => {
    const style = getComputedStyle(element, pseudo);
    const behind = background(element);
    const ratio = contrast(over(color(style.color), behind), behind);
    if (ratio < kLeastContrast) {
      faults.push(`contrast: ${name(element)}${pseudo || ""} has ${ratio.toFixed(2)}`);
    }
  };
  const isShown = element => element.checkVisibility() && element.getClientRects().length > 0;

  for (const folded of document.querySelectorAll("details")) folded.open = true;
  const width = document.documentElement.clientWidth;
  if (document.documentElement.scrollWidth > width) {
    faults.push(`overflow: the page is ${document.documentElement.scrollWidth} wide`);
  }
  for (const element of document.body.querySelectorAll("*")) {
    if (!isShown(element)) continue;
    const box = element.getBoundingClientRect();
    const parent = element.parentElement.getBoundingClientRect();
    if (box.left < parent.left - 0.5 || box.right > parent.right + 0.5) {
      faults.push(`overflow: ${name(element)} ends at ${box.right}, what it stands in at ${parent.right}`);
    }
    // What a container cuts off at its side.
    if (getComputedStyle(element).overflowX !== "visible" &&
        element.scrollWidth > element.clientWidth + 1) {
      faults.push(`cut: ${name(element)} holds ${element.scrollWidth} in ${element.clientWidth}`);
    }
    if ([...element.childNodes].some(node => node.nodeType === 3 && node.data.trim())) {
      checkText(element, null);
    }
    for (const pseudo of ["::before", "::after"]) {
      const content = getComputedStyle(element, pseudo).content;
      if (!["none", "normal", "\"\""].includes(content)) checkText(element, pseudo);
    }
  }

  const count = selector => document.querySelectorAll(selector).length;
  if (!document.title) faults.push("structure: no title");
  if (!document.documentElement.lang) faults.push("structure: no lang");
  if (count("h1") !== 1) faults.push(`structure: ${count("h1")} h1`);
  if (count("img:not([alt])")) faults.push("structure: an img without alt");
  for (const image of document.images) {
    if (isShown(image) && !image.naturalWidth) faults.push(`picture: ${image.src} is not there`);
  }
  for (const link of document.links) {
    if (isShown(link) && !link.textContent.trim()) faults.push(`link: ${link.href} has no text`);
  }

  // A page with a policy loads nothing, and no text of others is more than a text. Hostile texts
  // would set window.broken.
  if (window.broken) faults.push(`script: ${window.broken} ran`);
  if (document.querySelector("meta[http-equiv=Content-Security-Policy]")) {
    if (count("script") !== 1) faults.push(`script: there are ${count("script")}`);
    if (count("iframe, object, embed, link, form, base")) faults.push("script: a foreign element");
    for (const element of document.querySelectorAll("*")) {
      for (const {name: key, value} of element.attributes) {
        if (/^on|^style$/.test(key)) faults.push(`script: ${name(element)} has ${key}`);
        if (key === "src" && !value.startsWith("data:")) faults.push(`loads: ${value}`);
        if (key === "href" && !/^(#|https?:)/.test(value)) faults.push(`link: ${value}`);
      }
    }
  }
  return [...new Set(faults)];
})()
