'use strict';
const $ = id => document.getElementById(id);
const data = JSON.parse($('data').textContent);
$('data').remove();

// The parts of a node as they stand in the data.
const LEVEL = 0, KIND = 1, FLAGS = 2, CLASS = 3, METHOD = 4, OBJECT = 5, TIME = 6, END_TIME = 7, TEXT = 8, EXIT = 9, FILE = 10,
  LINE = 11, CALLS = 12;
const CALL = 0, THROWING = 2, OTHER = 3;
const ENTRY_MISSING = 1, EXIT_MISSING = 2, OPEN = 4;
const KINDS = ['call', 'data', 'throwing', 'other'];
const ROW = 24, MOST_PIXELS = 16000000, SHOWN_IN_ROW = 400, SHOWN_IN_DETAILS = 20000;

const state = { thread: null, shown: [], chosen: -1, hits: [], hit: -1, hitSet: new Set() };

const element = (tag, className, text) => {
  const made = document.createElement(tag);
  if (className) made.className = className;
  if (text !== undefined) made.textContent = text;
  return made;
};
const className = node => node[CLASS] < 0 ? '' : data.classes[node[CLASS]];
const shortClass = node => className(node).replace(/^.*\./s, '');
const method = node => node[METHOD] < 0 ? '' : data.methods[node[METHOD]];
const title = node => {
  if (node[CLASS] < 0) return node[CALLS] === 1 ? '(unknown call)' : `(${node[CALLS]} unknown calls)`;
  return method(node) ? `${shortClass(node)}.${method(node)}` : shortClass(node);
};
const marks = node => [[ENTRY_MISSING, 'entry missing'], [EXIT_MISSING, 'exit missing'], [OPEN, 'open at the end']]
  .filter(([flag]) => node[FLAGS] & flag).map(([, text]) => text);
const oneLine = text => text.length > SHOWN_IN_ROW ? text.slice(0, SHOWN_IN_ROW).replace(/\n/g, ' ⏎ ') + ' …' : text.replace(/\n/g, ' ⏎ ');

// Where each node ends and its place in the order of the records; made when a thread is looked at.
function prepare(thread) {
  if (thread.ends) return;
  const nodes = thread.nodes, count = nodes.length;
  thread.ends = new Uint32Array(count);
  thread.parents = new Int32Array(count).fill(-1);
  thread.from = new Float64Array(count);
  thread.to = new Float64Array(count);
  thread.folded = new Uint8Array(count);
  thread.levels = 0;
  const open = [];
  let place = 0;
  const close = (i, end) => { thread.ends[i] = end; thread.to[i] = nodes[i][END_TIME] ? ++place : Math.max(place, thread.from[i] + 1); };
  for (let i = 0; i < count; ++i) {
    const level = nodes[i][LEVEL];
    while (open.length > level) close(open.pop(), i);
    if (open.length) thread.parents[i] = open[open.length - 1];
    thread.levels = Math.max(thread.levels, level + 1);
    thread.from[i] = place;
    if (nodes[i][TIME]) ++place;
    open.push(i);
  }
  while (open.length) close(open.pop(), count);
  thread.places = Math.max(place, 1);
  thread.view = [0, thread.places];
}
