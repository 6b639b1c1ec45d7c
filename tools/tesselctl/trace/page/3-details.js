/* All of the chosen node. */
function showDetails() {
  const details = $('details'), node = state.thread.nodes[state.chosen];
  if (!node) {
    details.replaceChildren(element('p', 'empty', 'Choose a call to see all of it here.'));
    return;
  }
  const list = element('dl');
  const add = (name, value) => { if (value) list.append(element('dt', '', name), element('dd', '', value)); };
  add('Kind', KINDS[node[KIND]]);
  add('Class', className(node));
  add('Object', node[CLASS] < 0 ? '' : node[OBJECT] || 'static');
  add('Time', node[TIME]);
  add('Exit', node[END_TIME]);
  add('Place', node[LINE] ? `${data.files[node[FILE]]}, line ${node[LINE]}` : '');
  add('Note', marks(node).join(', '));
  details.replaceChildren(element('h2', '', title(node)), list);
  if (node[TEXT]) details.append(element('h3', '', node[KIND] === CALL ? 'Arguments' : 'Text'), longText(node[TEXT]));
  if (node[EXIT]) details.append(element('h3', '', 'Result'), longText(node[EXIT]));
}

function longText(text) {
  const pre = element('pre', '', text.slice(0, SHOWN_IN_DETAILS));
  if (text.length <= SHOWN_IN_DETAILS) return pre;
  const whole = element('button', '', `… show all ${text.length} characters`);
  whole.onclick = () => { pre.textContent = text; };
  pre.append(whole);
  return pre;
}
