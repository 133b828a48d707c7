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

// The categories that a decision value speaks for, above its threshold and below it; null for a regression. One
// of the two may be null: it stands for all other categories.
function sidesOf({above, below}) {
  return above === null && below === null ? null : [above, below];
}

// The decision to begin with: between the prediction and the category of the next largest share.
function firstDecision(decisions, results) {
  const prediction = String(headline(results)[1]);
  const [next] = sharesOf(results).filter(([category]) => category !== prediction).sort(([, a], [, b]) => b - a);
  const involved = decisions.filter((decision) => sidesOf(decision)?.includes(prediction));
  return involved.find((decision) => next && sidesOf(decision).includes(next[0])) ?? involved[0] ?? decisions[0];
}

const mostBars = 12;

// The inputs by the size of their values: the first few, and the sum of the others.
function largestOf(phi) {
  const all = Object.entries(phi).filter(([, value]) => isFiniteNumber(value))
    .sort(([, a], [, b]) => Math.abs(b) - Math.abs(a));
  const others = all.length > mostBars ? all.splice(mostBars - 1) : [];
  return {shown: all, others: others.length, sum: others.reduce((sum, [, value]) => sum + value, 0)};
}

// How far each input moves the decision value from its mean over the background: to the right, up. What moves
// it towards the prediction has the colour of the prediction.
function drawDecision(decision, prediction) {
  const sides = sidesOf(decision);
  const {shown, others, sum} = largestOf(decision.phi);
  const largest = Math.max(...shown.map(([, value]) => Math.abs(value)), Number.MIN_VALUE);
  const towards = sides && sides[1] === String(prediction) ? -1 : 1;
  const [right, left] = sides?.map((side) => side ?? 'others') ?? ['higher', 'lower'];
  const meaning = decision.threshold === null ? '' : `; above ${rounded(decision.threshold, 4)} speaks for ${right}`;
  const valueText = (name, value) => {
    const error = decision.error?.[name];
    return `${value > 0 ? '+' : ''}${rounded(value, 3)}${error > 0 ? ` ± ${rounded(error, 2)}` : ''}`;
  };
  return [
    element('p', {class: 'hint'}, `${sides ? 'A decision value of ' : ''}${rounded(decision.base, 4)} on average over the model’s ` +
      `support vectors, ${rounded(decision.decision, 4)} here${meaning}`),
    element('ul', {class: 'bars signed'},
      element('li', {class: 'sides', 'aria-hidden': 'true'}, element('span'),
        element('span', {class: 'axis'}, element('span', {title: left}, `← ${left}`), element('span', {title: right}, `${right} →`))),
      shown.map(([name, value]) => element('li', {},
        element('span', {class: 'name', title: name}, name),
        bar(0.5, 0.5 + value / (2 * largest), value * towards < 0 ? 'against' : 'for'),
        element('span', {class: 'value', title: String(value)}, valueText(name, value)))),
      others ? element('li', {}, element('span', {class: 'name'}, `${others} others`), element('span'),
        element('span', {class: 'value', title: String(sum)}, valueText(null, sum))) : null),
  ];
}

// drawExplanation(PLACE, DECISIONS, RESULTS, CHOSEN, ON_CHOOSE): one of the decisions behind these results, and a
// list of them all.
function drawExplanation(place, decisions, results, chosen, onChoose) {
  const prediction = headline(results)[1];
  const decision = decisions.find((each) => each.decision_of === chosen) ?? firstDecision(decisions, results);
  const sides = sidesOf(decision);
  const other = sides?.includes(String(prediction)) ? sides.find((side) => side !== String(prediction)) ?? 'others' : null;
  const words = other === null ? 'What moves the score' : `Why ${prediction} rather than ${other}`;
  const list = decisions.length < 2 ? null : element('select', {'aria-label': 'Decision', onchange: (event) => onChoose(event.target.value)},
    decisions.map((each) => element('option', {value: each.decision_of, selected: each === decision},
      sidesOf(each)?.filter((side) => side !== null).join(' or ') ?? each.decision_of)));
  const focused = place.contains(document.activeElement);
  place.replaceChildren(element('p', {class: 'eyebrow'}, words), ...(list ? [list] : []), ...drawDecision(decision, prediction));
  place.hidden = false;
  if (focused) list?.focus();
}
