// Put into a copy of a page in a frame, this leaves in an attribute of the document around it what a browser makes of
// the page.
(() => {
  const channels = (color) => (color.match(/[\d.]+/g) || []).map(Number);

  const luminance = ([red, green, blue]) => {
    const linear = [red, green, blue].map((channel) => {
      const part = channel / 255;
      return part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2];
  };

  const background = (element) => {
    for (let each = element; each; each = each.parentElement) {
      const color = channels(getComputedStyle(each).backgroundColor);
      if (color.length === 3 || color[3] === 1) return color;
    }
    return [255, 255, 255];
  };

  const contrast = (element) => {
    const tones = [luminance(channels(getComputedStyle(element).color)), luminance(background(element))];
    return (Math.max(...tones) + 0.05) / (Math.min(...tones) + 0.05);
  };

  let least = { contrast: 21, text: "" };
  let texts = 0;
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    const text = walker.currentNode.data.trim();
    if (text === "" || element.tagName === "SCRIPT" || !element.checkVisibility()) continue;
    texts += 1;
    const value = contrast(element);
    if (value < least.contrast) least = { contrast: value, text: text.slice(0, 40) };
  }

  const slots = [...document.querySelectorAll(".slot[id]")].map((slot) => {
    const { x, y, width, height } = slot.getBoundingClientRect();
    return { id: slot.id, drive: slot.querySelector("b").textContent, box: [x, y, width, height] };
  });

  const seen = [...document.querySelectorAll("a, summary")].filter((each) => each.checkVisibility());
  const targets = seen.map((target) => {
    const { width, height } = target.getBoundingClientRect();
    return { text: target.textContent, href: target.getAttribute("href"), width, height };
  });

  const anchors = [...document.querySelectorAll("[id]")].filter((each) => each.checkVisibility()).map((each) => each.id);

  const tables = [...document.querySelectorAll(".scroll")].filter((each) => each.checkVisibility()).map((scroll) => {
    const { x, y, width, height } = scroll.getBoundingClientRect();
    const columns = [...scroll.querySelectorAll("thead th")];
    return {
      name: scroll.getAttribute("aria-label"),
      box: [x, y, width, height],
      goesOn: scroll.scrollWidth > scroll.clientWidth,
      whole: columns.filter((each) => each.getBoundingClientRect().right <= x + width).map((each) => each.textContent),
    };
  });

  parent.document.documentElement.setAttribute("data-probe", JSON.stringify({
    width: window.innerWidth,
    contentWidth: document.documentElement.scrollWidth,
    isDark: matchMedia("(prefers-color-scheme: dark)").matches,
    texts, least, slots, targets, anchors, tables,
  }));
})();
