/* The tree: only the rows that are in sight exist. */
function layOut() {
  const { nodes, folded, ends } = state.thread;
  state.shown = [];
  for (let i = 0; i < nodes.length; i = folded[i] ? ends[i] : i + 1) state.shown.push(i);
  $('rows').style.height = Math.min(state.shown.length * ROW, MOST_PIXELS) + 'px';
  drawRows();
}

function firstRow() {
  const tree = $('tree'), all = state.shown.length * ROW;
  if (all <= MOST_PIXELS) return Math.floor(tree.scrollTop / ROW);
  return Math.floor(tree.scrollTop / (MOST_PIXELS - tree.clientHeight) * (state.shown.length - tree.clientHeight / ROW));
}

function drawRows() {
  const tree = $('tree'), first = firstRow();
  const top = state.shown.length * ROW <= MOST_PIXELS ? first * ROW : tree.scrollTop;
  const rows = [];
  for (let i = 0; i < tree.clientHeight / ROW + 1 && first + i < state.shown.length; ++i) {
    rows.push(makeRow(state.shown[first + i], top + i * ROW));
  }
  $('rows').replaceChildren(...rows);
}

function makeRow(index, top) {
  const thread = state.thread, node = thread.nodes[index];
  const inner = thread.ends[index] > index + 1;
  const row = element('div', `row ${KINDS[node[KIND]]}`);
  row.style.top = top + 'px';
  row.dataset.node = index;
  row.setAttribute('role', 'treeitem');
  row.setAttribute('aria-level', node[LEVEL] + 1);
  row.setAttribute('aria-selected', index === state.chosen);
  if (inner) row.setAttribute('aria-expanded', !thread.folded[index]);
  row.classList.toggle('chosen', index === state.chosen);
  row.classList.toggle('hit', state.hitSet.has(node));
  const fold = element('span', 'fold', inner ? (thread.folded[index] ? '▶' : '▼') : '');
  fold.style.marginLeft = Math.min(node[LEVEL], 60) * 16 + 'px';
  row.append(element('span', 'time', node[TIME] || (inner ? '' : node[END_TIME])), fold, makeLabel(node));
  for (const mark of marks(node)) row.append(element('span', 'mark', mark));
  return row;
}

function makeLabel(node) {
  const label = element('span', 'label');
  if (node[KIND] !== CALL) label.append(element('span', 'point', ['', '· ', '! ', '? '][node[KIND]]));
  if (node[CLASS] < 0) {
    label.append(element('span', 'class', title(node)));
  } else {
    label.append(element('span', 'class', shortClass(node) + (method(node) ? '.' : '')), element('span', 'method', method(node)));
  }
  if (node[TEXT]) label.append((node[KIND] === THROWING ? ', ' : ' ') + oneLine(node[TEXT]));
  if (node[EXIT]) label.append(element('span', 'result', ' ' + oneLine(node[EXIT])));
  return label;
}

function setFolded(index, folded) {
  state.thread.folded[index] = folded && state.thread.ends[index] > index + 1 ? 1 : 0;
  layOut();
}

function foldAll(folded) {
  const { nodes, ends, folded: flags } = state.thread;
  for (let i = 0; i < nodes.length; ++i) flags[i] = folded && ends[i] > i + 1 ? 1 : 0;
  layOut();
}

function choose(index) {
  state.chosen = index;
  for (let up = state.thread.parents[index]; up >= 0; up = state.thread.parents[up]) state.thread.folded[up] = 0;
  layOut();
  const tree = $('tree'), place = state.shown.indexOf(index), visible = tree.clientHeight / ROW, first = firstRow();
  if (place < first + 1 || place > first + visible - 2) {
    const row = Math.max(0, place - visible / 2);
    const all = state.shown.length * ROW;
    tree.scrollTop = all <= MOST_PIXELS ? row * ROW : row / (state.shown.length - visible) * (MOST_PIXELS - tree.clientHeight);
  }
  drawRows();
  showDetails();
  showInPicture(index);
}
