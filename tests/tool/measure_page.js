// Frames the page of each run in three widths, light and dark, and reads it as a person sees it: each value shown and
// the length of each bar, what the charts draw against the report, and what is hard to read.
const boxesOf = 'td, th, dd, dt, li, figure, h1, h2, h3, h4, p, summary, section, header';

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

function contrast(owner) {
  const lightness = colour => colour.match(/[\d.]+/g).slice(0, 3)
    .reduce((sum, part, i) => sum + [0.2126, 0.7152, 0.0722][i] * (part / 255) ** 2.2, 0.05);
  const ink = lightness(getComputedStyle(owner).color);
  while (getComputedStyle(owner).backgroundColor === 'rgba(0, 0, 0, 0)')
    owner = owner.parentElement;
  const paper = lightness(getComputedStyle(owner).backgroundColor);
  return Math.max(ink, paper) / Math.min(ink, paper);
}

function faultsOf(doc) {
  const faults = [], texts = textsOf(doc);
  const edge = doc.querySelector('main').getBoundingClientRect().right - 15; // the page's margin is 16 or more
  texts.forEach(({node, box, words, owner}, i) => {
    const room = owner.closest(boxesOf).getBoundingClientRect();
    if (box.left < room.left - 1 || box.right > Math.min(room.right + 1, edge) ||
        box.top < room.top - 4 || box.bottom > room.bottom + 4)
      faults.push('cut: ' + words);
    if (box.height < 12 || contrast(owner) < 4.5)
      faults.push('hard to read: ' + words);
    const inner = box.height / 4; // lines may touch
    for (const other of texts.slice(i + 1))
      if (other.node !== node && Math.min(box.right, other.box.right) - Math.max(box.left, other.box.left) > 1 &&
          Math.min(box.bottom, other.box.bottom) - Math.max(box.top, other.box.top) > inner)
        faults.push('overlap: ' + words + ' | ' + other.words);
  });
  return faults;
}

// What a chart has to draw: the bytes of each of its layers, time by time.
function samplesOf(report, layer) {
  if (layer.endsWith(', bytes'))
    return report.memory_over_time.map(({seconds, ...all}) =>
      ({seconds, bytes: {[layer]: all[layer.replace(', ', '_')]}}));
  return report.budget_over_time.map(({seconds, free_bytes: free, charged}) =>
    ({seconds, bytes: {free, ...Object.fromEntries(charged.map(({image, bytes}) => [image, bytes]))}}));
}

// Measures each layer at the moments that are drawn widest, and the height of the peak, however short it was.
function misdrawn(plot, report) {
  const height = ({free, ...layers}) => Object.values(layers).reduce((sum, bytes) => sum + bytes, 0);
  const room = plot.getBoundingClientRect(), samples = samplesOf(report, plot.querySelector('i').title);
  const end = Math.max(report.seconds, report.memory_over_time.at(-1).seconds);
  const most = Math.max(plot.querySelector('.ceiling') ? report.settings.budget_bytes : 0,
                        ...samples.map(({bytes}) => height(bytes) + (bytes.free ?? 0)));
  samples.forEach((sample, i) => { sample.width = ((samples[i + 1]?.seconds ?? end) - sample.seconds) / end; });
  const peak = samples.reduce((a, b) => height(a.bytes) >= height(b.bytes) ? a : b);
  const widest = samples.filter(({width}) => width * room.width > 4).sort((a, b) => b.width - a.width).slice(0, 6);
  return [peak, ...widest].flatMap(sample => {
    const x = Math.min(sample.seconds / end + Math.max(sample.width, 0.002) / 2, 0.999);
    let drawn = {}, wanted = sample.bytes;
    for (let y = 1; y < room.height; y += 2) {
      const layer = plot.ownerDocument.elementsFromPoint(room.left + room.width * x, room.top + y)
        .find(element => element.matches('.plot > i'));
      if (layer)
        drawn[layer.title] = (drawn[layer.title] ?? 0) + most / room.height * 2;
    }
    if (sample === peak)
      [drawn, wanted] = [{peak: height(drawn)}, {peak: height(wanted)}];
    return Object.keys({...wanted, ...drawn})
      .filter(layer => Math.abs((drawn[layer] ?? 0) - (wanted[layer] ?? 0)) > 4 * most / room.height)
      .map(layer => `${layer} at ${sample.seconds} s is ${drawn[layer]}, not ${wanted[layer]}`);
  });
}

// Whether the page may say so of a value: in a unit to one place, other fractions to three.
function mayBeSaid(text, unit, value) {
  if (typeof value !== 'number')
    return text === (value === true ? 'yes' : value === false ? 'no' : value);
  const plain = text.replaceAll(',', ''), places = plain.split('.')[1]?.length ?? 0;
  if (Number.isInteger(value) && !unit && places === 0)
    return plain === String(value);
  const size = unit ? 1024 ** ' KMGTPE'.indexOf(unit[0]) : 1;
  return places >= (unit ? 1 : 3) && Math.abs(value / size - plain) < 0.501 * 10 ** -places;
}

function* valuesOf(node, place = '') {
  if (node === null || typeof node !== 'object')
    yield [place, node];
  else
    for (const key in node)
      yield* valuesOf(node[key], `${place}/${key}`);
}

// The values that the page shows otherwise than the report has them, and those that it never shows in full.
function differences(doc, report) {
  const values = new Map(valuesOf(report)), wrong = [], inFull = new Set();
  const shown = [...doc.querySelectorAll('[data-key]')].filter(element => element.checkVisibility());
  for (const {dataset: {key, unit = ''}, textContent: text} of shown) {
    if (!mayBeSaid(text, unit, values.get(key)))
      wrong.push(`${key}: ${values.get(key)}, not ${text} ${unit}`);
    if (!unit)
      inFull.add(key);
  }
  const drawn = /^\/(budget_over_time|memory_over_time|bands)\//;
  const hidden = [...values.keys()].filter(key => values.get(key) !== null && !inFull.has(key) && !drawn.test(key));
  return [...wrong, ...hidden.map(key => key + ' is not shown')];
}

function outcomeOf({exit_status: status, peak_budget_bytes: peak, settings}) {
  return status !== 0 ? '✗ failed, exit status ' + status
    : peak > settings.budget_bytes ? '✗ above its budget' : '✓ done';
}

// None that would be empty.
function chartsOf({budget_over_time: budget = [], memory_over_time: memory = []}) {
  return (memory.length > 1 ? 2 : 0) + budget.some(({charged}) => charged.length > 0);
}

// The bar of each image is as long as its share of the budget.
function misjudged(doc, {steps, settings}, tables) {
  const width = element => element.getBoundingClientRect().width;
  const bars = [...doc.querySelectorAll('.meter')].map(bar => width(bar.firstChild) / width(bar));
  return steps.flatMap(step => step.images).flatMap(({charged_bytes: charged}, i) => {
    const share = charged / settings.budget_bytes;
    return [...(Math.abs(bars[i] - share) <= 0.002 * Math.max(1, share) ? [] : [`bar ${i} is ${bars[i]}, not ${share}`]),
            ...(tables.includes(charged) ? [] : [`the tables do not have ${charged}`])];
  });
}

function faultsOfLook(frame, i) {
  const doc = frame.contentDocument, {report, tables} = runs[Math.floor(i / looks.length)];
  const open = [...doc.querySelectorAll('table')].filter(table => table.checkVisibility());
  doc.querySelectorAll('details').forEach(part => { part.open = true; });
  const outcome = doc.querySelector('.badge').textContent, charts = doc.querySelectorAll('.chart').length;
  return [
    ...differences(doc, report), ...misjudged(doc, report, tables), ...faultsOf(doc),
    ...open.map(() => 'a table is open'),
    ...(outcome === outcomeOf(report) ? [] : [outcome]),
    ...(charts === chartsOf(report) ? [] : [charts + ' charts']),
    ...(differences(doc, {...report, exit_status: 99}).length > 0 ? [] : ['a wrong number stays unnoticed']),
    ...(i % 2 ? [] : [...doc.querySelectorAll('.plot')].flatMap(plot => misdrawn(plot, report))), // alike in dark
  ].map(fault => `${frame.style.cssText}: ${fault}`);
}

const looks = [360, 800, 1600].flatMap(width => ['light', 'dark'].map(scheme => ({width, scheme})));
for (const {page} of runs)
  for (const {width, scheme} of looks) {
    const frame = document.body.appendChild(document.createElement('iframe'));
    frame.style.cssText = `color-scheme: ${scheme}; width: ${width}px; height: 20000px; border: 0`;
    frame.srcdoc = page;
  }

onload = () => {
  const frames = [...document.querySelectorAll('iframe')], faults = frames.flatMap(faultsOfLook);
  document.querySelector('pre').textContent = `${frames.length} looks: ${faults.join('\n') || 'no faults'}`;
};
