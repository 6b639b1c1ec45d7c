/* The picture: a bar for each call, one line for each level. */
const LANE = 18, AXIS = 18, MOST_LANES = 400;
const canvas = $('picture');

const hues = new Map();
function hue(name) {
  if (!hues.has(name)) {
    let sum = 7;
    for (const c of name) sum = (sum * 31 + c.codePointAt(0)) % 360;
    hues.set(name, sum);
  }
  return hues.get(name);
}

function drawPicture() {
  const thread = state.thread, context = canvas.getContext('2d'), style = getComputedStyle(document.documentElement);
  const color = name => style.getPropertyValue(name).trim();
  const width = canvas.clientWidth, height = Math.min(thread.levels, MOST_LANES) * LANE + AXIS, scale = devicePixelRatio || 1;
  canvas.style.height = height + 'px';
  canvas.width = width * scale;
  canvas.height = height * scale;
  context.scale(scale, scale);
  context.font = '11px system-ui, sans-serif';
  context.textBaseline = 'middle';
  const [from, to] = thread.view, unit = width / (to - from);
  context.fillStyle = color('--quiet');
  context.fillText(`record ${Math.floor(from) + 1}`, 6, AXIS / 2);
  const last = `${Math.ceil(to)} of ${thread.places}`;
  context.fillText(last, width - context.measureText(last).width - 6, AXIS / 2);
  const colors = { fill: color('--bar'), edge: color('--barEdge'), text: color('--barText'), hatch: color('--hatch'), bad: color('--bad'),
    quiet: color('--quiet'), accent: color('--accent') };
  const drawnTo = [];
  for (let i = 0; i < thread.nodes.length; ++i) {
    if (thread.from[i] >= to) break;
    if (thread.to[i] <= from) { i = thread.ends[i] - 1; continue; }
    const node = thread.nodes[i], level = node[LEVEL];
    if (level >= MOST_LANES) continue;
    const left = Math.max(0, (thread.from[i] - from) * unit), right = Math.min(width, (thread.to[i] - from) * unit);
    // Of the bars within a pixel one is enough.
    if (right < (drawnTo[level] || 0) + 0.5 && i !== state.chosen && node[KIND] !== THROWING) continue;
    drawnTo[level] = right;
    drawBar(context, node, i, left, Math.max(right - left, 1), AXIS + level * LANE, colors);
  }
}

function drawBar(context, node, index, left, width, top, colors) {
  const unknown = node[CLASS] < 0 || node[FLAGS] & ENTRY_MISSING, h = hue(className(node));
  if (node[KIND] === CALL) {
    context.fillStyle = unknown ? colors.hatch : `hsl(${h} ${colors.fill})`;
    context.fillRect(left, top + 1, Math.max(width - 1, 1), LANE - 2);
    if (width > 3) {
      context.strokeStyle = node[FLAGS] ? colors.bad : `hsl(${h} ${colors.edge})`;
      context.setLineDash(node[FLAGS] ? [3, 2] : []);
      context.strokeRect(left + 0.5, top + 1.5, width - 2, LANE - 3);
    }
    if (width > 24) drawText(context, barText(context, node, width - 8), left + 4, top + LANE / 2, width - 8, colors.text);
  } else {
    context.fillStyle = node[KIND] === THROWING ? colors.bad : colors.quiet;
    context.fillRect(left, top + 4, Math.min(Math.max(width - 1, 1.5), 6), LANE - 8);
  }
  if (index === state.chosen) {
    context.setLineDash([]);
    context.lineWidth = 2;
    context.strokeStyle = colors.accent;
    context.strokeRect(left, top + 1, Math.max(width - 1, 3), LANE - 2);
    context.lineWidth = 1;
  }
}

// In a narrow bar the method tells more than its class.
function barText(context, node, width) {
  const whole = title(node);
  return context.measureText(whole).width <= width ? whole : method(node) || whole;
}

function drawText(context, text, left, middle, width, color) {
  context.save();
  context.beginPath();
  context.rect(left, middle - LANE / 2, width, LANE);
  context.clip();
  context.fillStyle = color;
  context.fillText(text.slice(0, 200), left, middle);
  context.restore();
}

function nodeAt(event) {
  const thread = state.thread, [from, to] = thread.view, level = Math.floor((event.offsetY - AXIS) / LANE);
  const place = from + event.offsetX / canvas.clientWidth * (to - from);
  for (let i = 0; i < thread.nodes.length && thread.from[i] <= place; ++i) {
    if (thread.to[i] <= place) i = thread.ends[i] - 1;
    else if (thread.nodes[i][LEVEL] === level) return i;
  }
  return -1;
}

function setView(from, to) {
  const width = Math.min(Math.max(to - from, 4), state.thread.places);
  const start = Math.min(Math.max(from, 0), state.thread.places - width);
  state.thread.view = [start, start + width];
  drawPicture();
}

function showInPicture(index) {
  const thread = state.thread, [from, to] = thread.view, place = thread.from[index], half = (to - from) / 2;
  if (thread.to[index] <= from || place >= to) setView(place - half, place + half);
  else drawPicture();
}

let drag = null;
canvas.onwheel = event => {
  event.preventDefault();
  const [from, to] = state.thread.view, middle = from + event.offsetX / canvas.clientWidth * (to - from);
  const factor = event.deltaY < 0 ? 0.8 : 1.25;
  setView(middle - (middle - from) * factor, middle + (to - middle) * factor);
};
canvas.onpointerdown = event => { drag = { x: event.offsetX, view: state.thread.view, moved: false }; canvas.setPointerCapture(event.pointerId); };
canvas.onpointermove = event => {
  if (!drag) {
    const node = state.thread.nodes[nodeAt(event)];
    canvas.title = node ? [title(node), oneLine(node[TEXT]), ...marks(node)].filter(Boolean).join('\n') : '';
    return;
  }
  const [from, to] = drag.view, by = (drag.x - event.offsetX) / canvas.clientWidth * (to - from);
  drag.moved ||= Math.abs(drag.x - event.offsetX) > 3;
  if (drag.moved) setView(from + by, to + by);
};
canvas.onpointerup = event => {
  const clicked = drag && !drag.moved ? nodeAt(event) : -1;
  drag = null;
  if (clicked >= 0) choose(clicked);
};
canvas.onpointercancel = () => { drag = null; };
canvas.ondblclick = () => setView(0, state.thread.places);
