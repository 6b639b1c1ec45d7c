/* Threads, keys and buttons. */
function showThread(number) {
  $('thread').value = number;
  state.thread = data.threads[number];
  state.chosen = -1;
  prepare(state.thread);
  $('tree').scrollTop = 0;
  // The picture first: it takes its room from the tree.
  drawPicture();
  layOut();
  showDetails();
}

function keyInTree(event) {
  if (!state.thread) return;
  const at = state.shown.indexOf(state.chosen), last = state.shown.length - 1, { folded, ends, parents } = state.thread;
  const inner = at >= 0 && ends[state.chosen] > state.chosen + 1;
  const goTo = place => choose(state.shown[Math.min(Math.max(place, 0), last)]);
  const actions = {
    ArrowDown: () => goTo(at + 1),
    ArrowUp: () => goTo(at - 1),
    PageDown: () => goTo(at + Math.floor($('tree').clientHeight / ROW)),
    PageUp: () => goTo(at - Math.floor($('tree').clientHeight / ROW)),
    Home: () => goTo(0),
    End: () => goTo(last),
    ArrowRight: () => { if (inner) { if (folded[state.chosen]) setFolded(state.chosen, false); else goTo(at + 1); } },
    ArrowLeft: () => { if (inner && !folded[state.chosen]) setFolded(state.chosen, true); else if (at >= 0 && parents[state.chosen] >= 0) choose(parents[state.chosen]); },
  };
  if (!actions[event.key] || last < 0) return;
  event.preventDefault();
  actions[event.key]();
}

$('rows').onclick = event => {
  const row = event.target.closest('.row');
  if (!row) return;
  const index = Number(row.dataset.node);
  if (event.target.closest('.fold')) setFolded(index, !state.thread.folded[index]);
  else choose(index);
};
$('rows').ondblclick = event => {
  const row = event.target.closest('.row');
  if (row && !event.target.closest('.fold')) setFolded(Number(row.dataset.node), !state.thread.folded[row.dataset.node]);
};
$('tree').onscroll = drawRows;
$('tree').onkeydown = keyInTree;
$('thread').onchange = event => showThread(Number(event.target.value));
$('unfold').onclick = () => foldAll(false);
$('fold').onclick = () => foldAll(true);
$('next').onclick = () => goToHit(state.hit + 1);
$('previous').onclick = () => goToHit(state.hit - 1);
$('search').oninput = search;
$('search').onkeydown = event => { if (event.key === 'Enter') goToHit(state.hit + (event.shiftKey ? -1 : 1)); };
document.onkeydown = event => {
  if (event.key !== '/' || event.target === $('search')) return;
  event.preventDefault();
  $('search').focus();
};
const redraw = () => { if (state.thread) { drawPicture(); drawRows(); } };
new ResizeObserver(redraw).observe($('tree'));
matchMedia('(prefers-color-scheme: dark)').onchange = redraw;

$('summary').textContent = data.summary;
data.threads.forEach((thread, number) => $('thread').append(new Option(`Thread ${thread.name}, ${thread.process}`, number)));
if (data.threads.length) {
  showThread(0);
} else {
  for (const control of document.querySelectorAll('header > :not(h1)')) control.disabled = true;
  $('frame').hidden = $('caption').hidden = true;
  $('details').append(element('p', 'empty', 'The trace has no record.'));
}
