/* The search: over all threads, in their order. */
function search() {
  const wanted = $('search').value.toLowerCase();
  state.hits = [];
  state.hit = -1;
  if (wanted) {
    data.threads.forEach((thread, number) => thread.nodes.forEach((node, index) => {
      const name = node[CLASS] < 0 ? '' : `${className(node)}.${method(node)}`;
      if (`${name}\n${node[TEXT]}\n${node[EXIT]}`.toLowerCase().includes(wanted)) state.hits.push([number, index]);
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
