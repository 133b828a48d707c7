'use strict';

// The page: which model is shown, and what happens when somebody types, drops a file, or the model is
// replaced underneath.

const pollSeconds = 3;
const typingPause = 120;       // milliseconds without a key before a score is asked for
const explanationPause = 250;  // milliseconds with a score before its explanation is

const shown = {
  id: null,           // the model on the page
  checksum: null,     // of the document that the card and the form were made from
  reopened: -Infinity,  // when the document was last found to be another one, in milliseconds
  fields: [],
  texts: {},          // what is entered, by model and input
  percentages: 'Probabilities',
  explains: true,     // until the service says that it cannot explain the model
  decision: null,     // the decision whose explanation was asked for
  unknown: null,      // the model of the address, where there is none
  download: null,     // the address of the last scored table
};
let models = [];
let asked = 0;        // counts scores that were asked for: an answer to an earlier one is ignored
let running = null;   // ends the request that is under way
let pause = null;

const short = (checksum) => checksum?.slice(0, 10) ?? '';
const texts = () => (shown.texts[shown.id] ??= {});

// ---- The list of models

function drawModels() {
  byId('model-count').textContent = models.length ? String(models.length) : '';
  byId('model-list').replaceChildren(...models.map((model) => element('li', {},
    element('a', {href: `#/${model.id}`, 'aria-current': model.id === shown.id ? 'page' : null},
      element('span', {class: 'id'}, model.id),
      element('span', {class: model.problem ? 'what bad' : 'what'}, stateOf(model))))));
  // On a narrow page the list is a row that may be longer than the page is wide.
  byId('model-list').querySelector('[aria-current]')?.scrollIntoView({block: 'nearest', inline: 'nearest'});
}

function stateOf(model) {
  if (!model.ready) return 'not loaded';
  return model.problem ? 'a newer document is refused' : model.miningFunction;
}

const checksumOf = (model) => model?.properties?.['file.checksum'] ?? null;

async function poll() {
  try {
    models = (await api.models()) ?? [];
    const ready = models.filter((model) => model.ready).length;
    server(ready === models.length ? `${counted(ready, 'model')} ready` : `${ready} of ${counted(models.length, 'model')} ready`,
      ready === models.length ? 'good' : 'warn');
    await follow();
  } catch (error) {
    server(error.status ? error.message : 'The service does not answer', 'bad');
  }
}

// Follows what the service has: the model of the address, or the first, or that none is loaded.
async function follow() {
  const wanted = location.hash.startsWith('#/') ? location.hash.slice(2) : '';  // ids need no escapes
  const known = models.find((model) => model.id === (wanted || shown.id));
  const next = known ?? models[0];
  if (wanted && !known && shown.unknown !== wanted && wanted !== shown.id) notice(`There is no model ${wanted}.`);
  shown.unknown = known ? null : wanted;
  if (shown.id && !models.some((model) => model.id === shown.id)) notice(`${shown.id} is no longer loaded.`);
  byId('no-model').hidden = Boolean(next);
  byId('with-model').hidden = !next;
  if (!next) shown.id = null;
  else if (next.id !== shown.id) await open(next.id);
  else if (checksumOf(next) !== shown.checksum) await reopen();
  else drawProblem(next);
  drawModels();
}

function server(text, kind) {
  const place = byId('server');
  if (place.textContent !== text) place.textContent = text;
  place.className = `server ${kind}`;
}

function notice(text) {
  byId('notice-text').textContent = text;
  byId('notice').hidden = false;
}

// ---- The card of a model

// open(ID): shows another model. What was entered for it before is entered again.
async function open(id) {
  shown.id = id;
  shown.checksum = null;
  byId('table-result').replaceChildren();
  await load();
}

// reopen(): the document of the shown model was replaced.
async function reopen() {
  // Two services behind one address that do not agree would be asked without end.
  if (performance.now() - shown.reopened < 1000) return;
  shown.reopened = performance.now();
  const before = shown.checksum;
  await load();
  if (!before || !shown.checksum || shown.checksum === before) return;
  notice(`${shown.id} was replaced: ${short(before)} gave way to ${short(shown.checksum)}. ` +
    'The card, the form and the score are those of the new document.');
}

async function load() {
  const id = shown.id;
  const {body, checksum} = await api.model(id);
  if (id !== shown.id) return;  // another model was chosen meanwhile
  shown.checksum = checksumOf(body) ?? checksum;
  document.title = `${id} · svmscore`;
  drawCard(body);
  drawProblem(body);
  byId('bench').hidden = !body.ready;
  if (!body.ready) return;
  shown.percentages = /vote/.test(body.card?.percentages) ? 'Shares of votes' : 'Probabilities';
  shown.explains = true;
  shown.decision = null;
  drawFindings(body.findings ?? []);
  const fields = fieldsOf(body.schema);
  // A form of the same inputs is left alone: somebody may be typing in it.
  if (JSON.stringify(fields) !== JSON.stringify(shown.fields) || byId('inputs').dataset.model !== id) {
    const focused = document.activeElement?.form === byId('inputs') ? document.activeElement.name : null;
    shown.fields = fields;
    byId('inputs').dataset.model = id;
    buildForm(byId('inputs'), fields, texts());
    if (focused) byId('inputs').elements.namedItem(focused)?.focus();
  }
  score();
}

// Why the latest document of the id is not the one that answers.
function drawProblem(model) {
  byId('problem').hidden = !model.problem;
  byId('problem').textContent = !model.problem ? ''
    : `${model.ready ? 'A newer document is refused, and the one before goes on answering: '
      : 'Its document cannot be used: '}${model.problem}`;
}

function drawCard(model) {
  byId('model-title').textContent = model.id;
  const target = model.schema?.targetFields?.[0];
  const classes = target?.values?.length ?? 0;
  byId('model-kind').textContent = [
    model.miningFunction,
    target && `of ${target.id ?? target.name}`,
    classes > 1 && model.miningFunction === 'classification' ? `in ${classes} classes` : null,
  ].filter(Boolean).join(' ');
  const properties = model.properties ?? {};
  const facts = [
    ['Checksum', shown.checksum && element('code', {title: shown.checksum}, short(shown.checksum))],
    ['Loaded', timeText(properties['created.timestamp'])],
    ['Size', sizeText(properties['file.size'])],
    ['Kernel', kernelText(model.card?.kernel)],
    ['Support vectors', model.card?.counts?.vectors.toLocaleString('en')],
    ['Findings', model.ready ? findingsFact(model.findings ?? []) : null],
  ].filter(([, value]) => value);
  byId('model-facts').replaceChildren(...facts.map(([name, value]) => element('div', {},
    element('dt', {}, name), element('dd', {}, value))));
}

function kernelText(kernel) {
  const parameters = Object.entries(kernel?.parameters ?? {});
  return kernel ? [kernel.type, ...parameters.map(([name, value]) => `${name} ${rounded(value)}`)].join(', ') : null;
}

// How many findings there are, and whether they change scores; leads to them.
function findingsFact(findings) {
  if (!findings.length) return 'none';
  const changing = findings.filter((finding) => finding.changesScores).length;
  return element('button', {
    type: 'button', class: changing ? 'quiet bad' : 'quiet',
    onclick: () => { byId('findings-title').focus(); byId('findings-title').scrollIntoView(); },
  }, changing ? `${findings.length > changing ? `${findings.length}, ` : ''}${changing} ${changing === 1 ? 'changes' : 'change'} scores`
    : String(findings.length));
}

function timeText(stamp) {
  const time = stamp ? new Date(stamp) : null;
  return time && !Number.isNaN(time.getTime())
    ? element('time', {dateTime: time.toISOString(), title: stamp}, time.toLocaleString(undefined, {dateStyle: 'medium', timeStyle: 'short'})) : null;
}

function sizeText(bytes) {
  if (!isFiniteNumber(bytes)) return null;
  const units = ['bytes', 'kB', 'MB', 'GB'];
  const power = Math.min(Math.floor(Math.log10(Math.max(bytes, 1)) / 3), 3);
  return `${(bytes / 1000 ** power).toFixed(power ? 1 : 0)} ${units[power]}`;
}

function drawFindings(findings) {
  byId('findings-count').textContent = findings.length ? counted(findings.length, 'finding') : '';
  byId('findings').replaceChildren(findings.length
    ? element('ul', {class: 'finding-list'}, findings.map(drawFinding))
    : element('p', {class: 'all-well'}, 'The doctor found nothing wrong with this document.'));
}

function drawFinding(finding) {
  const place = [finding.element, finding.line ? `line ${finding.line}` : null,
    finding.further ? `and ${counted(finding.further, 'more place')}` : null].filter(Boolean).join(', ');
  return element('li', {class: `finding ${finding.severity}`},
    element('p', {class: 'finding-head'},
      element('span', {class: 'severity'}, finding.severity),
      element('code', {}, finding.name),
      finding.changesScores ? element('span', {class: 'changes'}, 'changes scores') : null,
      element('span', {class: 'place'}, place)),
    element('p', {class: 'finding-what'}, sentence(finding.what)),
    element('p', {class: 'finding-more'}, sentence(finding.consequence)),
    element('p', {class: 'finding-more'}, element('b', {}, 'Remedy: '), sentence(finding.remedy)));
}

const sentence = (text) => (text ? `${text[0].toUpperCase()}${text.slice(1)}${/[.!?]$/.test(text) ? '' : '.'}` : null);

// ---- The score

function entered() {
  shown.texts[shown.id] = textsOf(byId('inputs'));
  const count = Object.keys(texts()).length;
  byId('filled').textContent = `${count} of ${shown.fields.length}`;
  byId('clear').disabled = count === 0;
  drawCommand();
}

function drawCommand() {
  const quoted = (text) => `'${text.replaceAll("'", "'\\''")}'`;
  const address = new URL(modelPath(shown.id), document.baseURI.split('#')[0]).href;
  byId('command').textContent =
    `curl ${quoted(address)} \\\n  -H 'Content-Type: application/json' \\\n  -d ${quoted(scoreBody(valuesOf(shown.fields, texts())))}`;
}

// score(): asks for the score of what is entered, and draws the answer unless a later one was asked for.
async function score() {
  entered();
  running?.abort();
  const order = (asked += 1);
  const id = shown.id;
  const current = () => order === asked && id === shown.id;
  const values = valuesOf(shown.fields, texts());
  if (Object.keys(values).length === 0 && shown.fields.length > 0) {
    waiting();
    return;
  }
  running = new AbortController();
  byId('score').setAttribute('aria-busy', 'true');
  try {
    const started = performance.now();
    const {body, checksum} = await api.score(id, values, running.signal);
    if (!current()) return;
    byId('score-state').textContent = `${Math.max(1, Math.round(performance.now() - started))} ms`;
    const scored = drawAnswer(body);
    if (checksum && checksum !== shown.checksum) await reopen();
    else if (scored) await explain(id, values, body.results, current);
  } catch (error) {
    if (error.name === 'AbortError' || !current()) return;
    byId('score-state').textContent = '';
    drawFailure(byId('score'), [error.message]);
    hideDetails();
  } finally {
    if (current()) byId('score').removeAttribute('aria-busy');
  }
}

function hideDetails() {
  byId('explanation').hidden = true;
  byId('details').hidden = true;
}

function waiting() {
  const gaps = shown.fields.map((field) => field.id).filter((name) => !(name in texts()));
  byId('score-state').textContent = '';
  drawMissing(byId('score'), gaps, shown.fields.length, goTo);
  markErrors(byId('inputs'), {});
  hideDetails();
}

// goTo(NAME): puts the cursor into the control of an input.
function goTo(name) {
  byId('inputs').elements.namedItem(name)?.focus();
}

// The reasons of a case that could not be scored, by the name of the input that each begins with.
function reasonsOf(reason) {
  const reasons = {};
  for (const field of shown.fields) {
    for (const part of String(reason ?? '').split('; ')) {
      if (part.startsWith(`${field.id}: `)) reasons[field.id] = part.slice(field.id.length + 2);
    }
  }
  return reasons;
}

// Draws the answer; false where the case could not be scored.
function drawAnswer(body) {
  const results = body.results ?? {};
  const reason = body.reason ?? results.reason;
  const status = Number(body.status ?? results.status ?? 0);
  const reasons = reasonsOf(reason);
  if (status === 0) {
    drawScore(byId('score'), results, shown.percentages);
  } else if (status === 90029) {
    waiting();
  } else {
    drawFailure(byId('score'), reason ? String(reason).split('; ') : ['The case cannot be scored.']);
  }
  markErrors(byId('inputs'), status === 0 || status === 90029 ? {} : reasons);
  drawCells(byId('results'), results);
  byId('details').hidden = status !== 0;
  if (status !== 0) byId('explanation').hidden = true;
  return status === 0;
}

// explain(): asks what moved the score that is shown, once nobody types any more.
async function explain(id, values, results, current) {
  if (!shown.explains) return;
  try {
    await new Promise((resolve) => { setTimeout(resolve, explanationPause); });
    if (!current()) return;
    const {body} = await api.explain(id, values, running.signal);
    if (!current()) return;
    const draw = () => drawExplanation(byId('explanation'), body.explanations, results, shown.decision, (chosen) => {
      shown.decision = chosen;
      draw();
    });
    if (body.explanations?.length) draw();
    else byId('explanation').hidden = true;
  } catch (error) {
    if (error.name === 'AbortError') return;
    if (error.status === 501) shown.explains = false;  // this model cannot be explained
    if (current()) byId('explanation').hidden = true;
  }
}

// ---- A table

async function scoreTable(file) {
  const id = shown.id;
  const place = byId('table-result');
  if (!id || !file) return;
  place.replaceChildren(element('p', {class: 'busy'}, `Scoring ${file.name} …`));
  try {
    const beginning = await beginningOf(file);
    const delimiter = delimiterOf(beginning);
    const {blob, checksum} = await api.table(id, file, delimiter);
    if (shown.download) URL.revokeObjectURL(shown.download);
    shown.download = await showTable(place, file, blob, firstRows(beginning, delimiter), takeRow);
    if (checksum && id === shown.id && checksum !== shown.checksum) await reopen();
  } catch (error) {
    place.replaceChildren(element('p', {class: 'failure'}, `${file.name}: ${error.message}`));
  }
}

// takeRow(NAMES, CELLS): enters a row of a table.
function takeRow(names, cells) {
  const missing = new Set(['', 'NA', 'N/A']);
  const row = {};
  names.forEach((name, place) => {
    if (!missing.has(cells[place])) row[name] = cells[place];
  });
  fillForm(byId('inputs'), row);
  score();
  byId('inputs').elements[0]?.focus();
}

// ---- What people do

function listen() {
  byId('inputs').addEventListener('input', () => {
    entered();
    clearTimeout(pause);
    pause = setTimeout(score, typingPause);
  });
  byId('inputs').addEventListener('submit', (event) => {
    event.preventDefault();
    clearTimeout(pause);
    score();
  });
  byId('clear').addEventListener('click', () => {
    fillForm(byId('inputs'), {});
    score();
    byId('inputs').elements[0]?.focus();
  });
  byId('notice-close').addEventListener('click', () => {
    byId('notice').hidden = true;
    byId('model').focus();
  });
  byId('file').addEventListener('change', (event) => {
    scoreTable(event.target.files[0]);
    event.target.value = '';  // so that the same file can be chosen again
  });
  byId('copy').addEventListener('click', copyCommand);
  window.addEventListener('hashchange', () => follow().catch(pollFailed));
  document.addEventListener('visibilitychange', () => {
    if (!document.hidden) poll();
  });
  listenForFiles();
}

function listenForFiles() {
  const hasFile = (event) => event.dataTransfer?.types.includes('Files');
  const marked = (over) => document.body.classList.toggle('dropping', over);
  window.addEventListener('dragover', (event) => {
    if (!hasFile(event)) return;
    event.preventDefault();
    marked(true);
  });
  window.addEventListener('dragleave', (event) => {
    if (!event.relatedTarget) marked(false);
  });
  window.addEventListener('drop', (event) => {
    if (!hasFile(event)) return;
    event.preventDefault();
    marked(false);
    scoreTable(event.dataTransfer.files[0]);
    byId('drop').scrollIntoView({block: 'nearest'});
  });
}

async function copyCommand() {
  try {
    await navigator.clipboard.writeText(byId('command').textContent);
    byId('copy').textContent = 'Copied';
  } catch {
    getSelection().selectAllChildren(byId('command'));
    byId('copy').textContent = 'Selected: press Ctrl+C';
  }
  setTimeout(() => { byId('copy').textContent = 'Copy'; }, 2000);
}

const pollFailed = (error) => server(error.message, 'bad');

async function keepWatching() {
  if (!document.hidden) await poll();
  setTimeout(keepWatching, 1000 * pollSeconds);
}

listen();
keepWatching();
