// Frames each of the pages wide and narrow, in light and dark, and reads it as a person sees it: each value shown, the
// length of each bar, and what is hard to read.
const boxesOf = 'svg, td, th, dd, dt, li, figure, h1, h2, h3, p';

function textsOf(doc) {
  const texts = [], walker = doc.createTreeWalker(doc.body, NodeFilter.SHOW_TEXT);
  for (let node; (node = walker.nextNode());) {
    const range = doc.createRange();
    range.selectNodeContents(node);
    for (const box of range.getClientRects())
      if (node.data.trim() && box.width > 0)
        texts.push({node, box, words: node.data.trim(), owner: node.parentElement});
  }
  return texts;
}

function faultsOf(doc, view) {
  const faults = [], texts = textsOf(doc);
  if (doc.documentElement.scrollWidth > view.innerWidth)
    faults.push('the page scrolls sideways');
  texts.forEach(({node, box, words, owner}, i) => {
    const room = owner.closest(boxesOf).getBoundingClientRect();
    if (box.left < room.left - 1 || box.right > room.right + 1 || box.top < room.top - 4 || box.bottom > room.bottom + 4)
      faults.push('cut: ' + words);
    if (box.height < 12)
      faults.push('small: ' + words);
    const inner = box.height / 4; // lines may touch
    for (const other of texts.slice(i + 1))
      if (other.node !== node && Math.min(box.right, other.box.right) - Math.max(box.left, other.box.left) > 1 &&
          Math.min(box.bottom, other.box.bottom) - Math.max(box.top, other.box.top) > inner)
        faults.push('overlap: ' + words + ' | ' + other.words);
  });
  return faults;
}

function measure(frame) {
  const doc = frame.contentDocument, width = element => element.getBoundingClientRect().width;
  doc.querySelectorAll('details').forEach(part => { part.open = true; });
  return {
    look: frame.style.cssText,
    shown: [...doc.querySelectorAll('[data-key]')].filter(element => element.checkVisibility())
      .map(element => [element.dataset.key, element.dataset.unit ?? '', element.textContent]),
    bars: [...doc.querySelectorAll('.meter')]
      .map(bar => width(bar.querySelector('.bar')) / width(bar.querySelector('.track'))),
    charts: [...doc.querySelectorAll('.chart')].filter(chart => chart.checkVisibility()).length,
    faults: faultsOf(doc, frame.contentWindow),
  };
}

for (const page of pages)
  for (const scheme of ['light', 'dark'])
    for (const width of [1280, 400]) {
      const frame = document.body.appendChild(document.createElement('iframe'));
      frame.style.cssText = `color-scheme: ${scheme}; width: ${width}px; border: 0`;
      frame.srcdoc = page;
    }

onload = () => {
  const seen = JSON.stringify([...document.querySelectorAll('iframe')].map(measure));
  document.querySelector('pre').textContent =
    seen.replace(/[^ -~]|[&<>]/g, letter => '\\u' + letter.charCodeAt(0).toString(16).padStart(4, '0'));
};
