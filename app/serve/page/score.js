'use strict';

// Drawing a score: the prediction, probabilities as bars, an interval as a line, an explanation as bars
// to both sides.

const percent = (share) => (share === 0 || share === 1 ? `${100 * share} %`
  : `${(100 * share).toFixed(share > 0.9995 || share < 0.0005 ? 2 : 1)} %`);
const rounded = (value, digits = 6) => Number(value.toPrecision(digits))
  .toLocaleString('en', {maximumSignificantDigits: digits}).replace('-', '−');
const isFiniteNumber = (value) => typeof value === 'number' && Number.isFinite(value);

// A bar from one share of the width to another.
function bar(from, to, kind) {
  const fill = element('span', {class: `fill ${kind}`});
  fill.style.left = `${100 * Math.min(from, to)}%`;
  fill.style.width = `${100 * Math.abs(to - from)}%`;
  return element('span', {class: 'bar', 'aria-hidden': 'true'}, fill);
}

// sharesOf(RESULTS): the category and share of each "probability(CATEGORY)".
function sharesOf(results) {
  return Object.entries(results).flatMap(([name, value]) => {
    const match = /^probability\(([\s\S]*)\)$/.exec(name);
    return match && isFiniteNumber(value) ? [[match[1], value]] : [];
  });
}

function drawShares(shares, prediction, words) {
  return element('section', {'aria-label': words},
    element('p', {class: 'eyebrow'}, words),
    element('ul', {class: 'bars'}, shares.map(([category, share]) => element('li',
      {class: category === String(prediction) ? 'chosen' : ''},
      element('span', {class: 'name', title: category}, category),
      bar(0, share, 'share'),
      element('span', {class: 'value', title: String(share)}, percent(share))))));
}

function drawInterval(prediction, low, high, level) {
  const dot = element('span', {class: 'dot'});
  dot.style.left = `${(100 * (prediction - low)) / (high - low || 1)}%`;
  return element('div', {class: 'interval'},
    element('p', {class: 'eyebrow'}, level ?? 'Interval'),
    element('div', {class: 'line', 'aria-hidden': 'true'}, dot),
    element('p', {class: 'ends'},
      element('span', {title: String(low)}, rounded(low)),
      element('span', {class: 'to'}, 'to'),
      element('span', {title: String(high)}, rounded(high))));
}

// The document's own output fields may be of any name: the first cell is the headline then.
function headline(results) {
  const name = 'prediction' in results ? 'prediction' : Object.keys(results).find((key) => key !== 'status' && key !== 'reason');
  return [name, name === undefined ? null : results[name]];
}

// drawScore(PLACE, RESULTS, WORDS): draws the cells of one case.
function drawScore(place, results, percentages) {
  const [name, value] = headline(results);
  const number = isFiniteNumber(value);
  const shares = sharesOf(results);
  const low = results.ci_lower;
  const high = results.ci_upper;
  place.replaceChildren(
    element('p', {class: 'eyebrow'}, name === 'prediction' ? 'Prediction' : name),
    element('p', {class: 'headline', id: 'prediction', title: String(value)}, number ? rounded(value) : String(value)),
    ...(shares.length ? [drawShares(shares, value, percentages)] : []),
    ...(number && isFiniteNumber(low) && isFiniteNumber(high) ? [drawInterval(value, low, high)] : []));
}

// drawMissing(PLACE, NAMES, TOTAL): says which inputs a score waits for; each leads to its control.
function drawMissing(place, names, total, onGo) {
  const shown = names.slice(0, 6);
  place.replaceChildren(
    element('p', {class: 'waiting'}, names.length === total
      ? 'Enter the inputs: the score appears as you type.'
      : `${counted(names.length, 'input has', 'inputs have')} no value yet:`),
    ...(names.length === total ? [] : [element('ul', {class: 'gaps'},
      shown.map((name) => element('li', {}, element('button', {type: 'button', class: 'quiet', onclick: () => onGo(name)}, name))),
      names.length > shown.length ? element('li', {class: 'more'}, `and ${names.length - shown.length} more`) : null)]));
}

function drawFailure(place, sentences) {
  place.replaceChildren(element('div', {class: 'failures'},
    sentences.map((sentence) => element('p', {class: 'failure'}, sentence))));
}

// drawCells(TABLE, RESULTS): every cell with all its digits.
function drawCells(table, results) {
  table.replaceChildren(element('tbody', {}, Object.entries(results).map(([name, value]) => element('tr', {},
    element('th', {scope: 'row'}, name),
    element('td', {}, value === null ? 'none' : String(value))))));
}

// drawExplanation(PLACE, PARTS): how much each input moved the decision value away from its mean over the
// background. PARTS: {decision_of, base, decision, phi: {INPUT: VALUE}}.
function drawExplanation(place, parts) {
  const all = Object.entries(parts.phi).filter(([, value]) => isFiniteNumber(value))
    .sort(([, a], [, b]) => Math.abs(b) - Math.abs(a));
  const shown = all.slice(0, 12);
  const rest = all.slice(12).reduce((sum, [, value]) => sum + value, 0);
  if (all.length > shown.length) shown.push([`${all.length - 12} others`, rest]);
  const largest = Math.max(...shown.map(([, value]) => Math.abs(value)), Number.MIN_VALUE);
  const at = (value) => 0.5 + value / (2 * largest);
  place.replaceChildren(
    element('p', {class: 'eyebrow'}, 'What moved it'),
    element('p', {class: 'hint'},
      `${parts.decision_of ? `${parts.decision_of.replace('|', ' or ')}: ` : ''}` +
      `a decision value of ${rounded(parts.base, 4)} on average, ${rounded(parts.decision, 4)} here`),
    element('ul', {class: 'bars signed'}, shown.map(([name, value]) => element('li', {},
      element('span', {class: 'name', title: name}, name),
      bar(0.5, at(value), value < 0 ? 'down' : 'up'),
      element('span', {class: 'value', title: String(value)}, `${value > 0 ? '+' : ''}${rounded(value, 4)}`)))));
  place.hidden = false;
}
