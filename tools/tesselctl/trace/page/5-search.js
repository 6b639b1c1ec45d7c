/* The search: over all threads, in their order. */
function isWanted(text) {
  const pattern = new RegExp(text.replace(/[.*+?^${}()|[\]\\]/g, '\\$&'), 'i');
  const names = new Map();
  // Names are few: each is looked at once.
  const nameIsWanted = node => {
    const name = node[CLASS] < 0 ? '' : `${className(node)}.${method(node)}`;
    if (!names.has(name)) names.set(name, name !== '' && pattern.test(name));
    return names.get(name);
  };
  return node => nameIsWanted(node) || pattern.test(node[TEXT]) || pattern.test(node[EXIT]);
}

function search() {
  const text = $('search').value, wanted = text && isWanted(text);
  state.hits = [];
  state.hit = -1;
  if (wanted) {
    data.threads.forEach((thread, number) => thread.nodes.forEach((node, index) => {
      if (wanted(node)) state.hits.push([number, index]);
    }));
  }
  state.hitSet = new Set(state.hits.map(([number, index]) => data.threads[number].nodes[index]));
  if (state.hits.length) goToHit(0);
  else { showHits(); drawRows(); }
}

function showHits() {
  $('hits').textContent = !$('search').value ? '' : state.hits.length ? `${state.hit + 1} of ${state.hits.length}` : 'no hit';
}

function goToHit(hit) {
  if (!state.hits.length) return;
  state.hit = (hit + state.hits.length) % state.hits.length;
  const [number, index] = state.hits[state.hit];
  if (data.threads[number] !== state.thread) showThread(number);
  choose(index);
  showHits();
}
