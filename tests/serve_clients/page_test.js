'use strict';

// Drives the page in Chromium as people do. PLAN, a variable of the environment, is JSON: the address, the
// folder of models that the service watches, the examples, what the program writes for them, and the folder
// for screenshots.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const test = require('node:test');
const {chromium} = require(require.resolve('playwright-core', {paths: [process.env.NODE_PATH]}));

const plan = JSON.parse(process.env.PLAN);
const rowsOf = (text) => text.trim().split('\n').map((line) => line.split(','));
const example = (name, file) => path.join(plan.examples, name, file);
const inputs = (name, row) => {
  const [names, ...rows] = rowsOf(fs.readFileSync(example(name, 'cases.csv'), 'utf8'));
  return Object.fromEntries(names.slice(0, -1).map((key, place) => [key, rows[row][place]]));
};
const expectedCells = (name, row) => {
  const [names, ...rows] = rowsOf(plan.expected[name]);
  return Object.fromEntries(names.map((key, place) => [key, rows[row][place]]));
};

let browser;
test.before(async () => {
  browser = await chromium.launch({executablePath: '/usr/bin/chromium', args: ['--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage']});
});
test.after(() => browser?.close());

// A page on which nothing may go wrong unseen: errors, and requests for other hosts, fail the test.
function onPage(name, options, act) {
  if (plan.picture && !options.isPicture) return;
  test(name, async () => {
    const context = await browser.newContext({viewport: {width: 1280, height: 860}, ...options});
    context.setDefaultTimeout(10000);
    const page = await context.newPage();
    const faults = [];
    page.on('console', (message) => {
      if (['error', 'warning'].includes(message.type()) && !options.expectsErrors) faults.push(message.text());
    });
    page.on('pageerror', (error) => faults.push(String(error)));
    page.on('request', (request) => {
      if (!/^(data|blob):/.test(request.url()) && !request.url().startsWith(plan.url)) faults.push(request.url());
    });
    try {
      await act(page);
      assert.deepEqual(faults, []);
    } catch (error) {
      await page.screenshot({path: path.join(plan.shots, 'failed.png'), fullPage: true});
      throw error;
    } finally {
      await context.close();
    }
  });
}

async function openModel(page, id) {
  await page.goto(`${plan.url}#/${id}`);
  await page.waitForFunction((name) => document.getElementById('model-title').textContent === name, id);
}

async function enter(page, values) {
  for (const [name, value] of Object.entries(values)) {
    const control = page.getByLabel(name, {exact: true});
    if (await control.evaluate((found) => found.tagName) === 'SELECT') await control.selectOption(`=${value}`);
    else await control.fill(value);
  }
}

const cells = (page) => page.evaluate(() => Object.fromEntries(
  [...document.querySelectorAll('#results tr')].map((row) => [row.cells[0].textContent, row.cells[1].textContent])));

// The page asks while people type: the score of all that is entered comes last.
async function untilScored(page, expected) {
  await page.waitForFunction((wanted) => {
    const shown = Object.fromEntries([...document.querySelectorAll('#results tr')]
      .map((row) => [row.cells[0].textContent, row.cells[1].textContent]));
    return Object.entries(wanted).every(([name, text]) => shown[name] === text);
  }, expected).catch(async () => assert.deepEqual(await cells(page), expected));
}

for (const name of ['iris', 'diabetes']) {
  onPage(`the form of ${name} gives the scores of the program`, {}, async (page) => {
    await openModel(page, name);
    for (const row of [0, 1, 2]) {
      await enter(page, inputs(name, row));
      await untilScored(page, expectedCells(name, row));
    }
  });
}

onPage('an answer that comes late is ignored', {}, async (page) => {
  await openModel(page, 'iris');
  await enter(page, inputs('iris', 0));
  await page.waitForSelector('#prediction');
  let release;
  const held = new Promise((resolve) => { release = resolve; });
  let given = null;  // when the first answer has come at last
  await page.route('**/model/iris', async (route) => {
    if (route.request().method() !== 'POST' || given) return route.continue();
    const answer = route.fetch();
    given = held.then(async () => route.fulfill({response: await answer})).catch(() => {});
    return given;
  });
  const asked = page.waitForRequest((request) => request.method() === 'POST' && request.url().endsWith('/model/iris'));
  await enter(page, inputs('iris', 2));
  await asked;
  await enter(page, inputs('iris', 4));  // each of the three rows has another prediction
  await untilScored(page, expectedCells('iris', 4));
  release();
  await given;
  await page.waitForTimeout(300);
  assert.deepEqual(await cells(page), expectedCells('iris', 4));
});

onPage('an explanation is drawn as bars to both sides', {}, async (page) => {
  await openModel(page, 'iris');
  await enter(page, inputs('iris', 0));
  await untilScored(page, expectedCells('iris', 0));
  await page.waitForSelector('#explanation:not([hidden])');
  assert.equal(await page.locator('#explanation .eyebrow').innerText(), 'Why virginica rather than versicolor');
  assert.match(await page.locator('#explanation .hint').innerText(), /−0\.07926 on average .*, −0\.6604 here; above 0 speaks for versicolor$/);
  const bars = await page.locator('#explanation li:not(.sides)').allInnerTexts();
  assert.deepEqual(bars.map((text) => text.split(/\s+/)), [['petal_width', '−0.461'], ['sepal_width', '−0.0782'],
    ['sepal_length', '−0.0237'], ['petal_length', '−0.0183']]);
  assert.equal(await page.locator('#explanation .fill.for').count(), 4);
  await page.getByLabel('Decision').selectOption('setosa|versicolor');
  assert.match(await page.locator('#explanation .hint').innerText(), /−0\.558 on average .*, −0\.8481 here; above 0 speaks for setosa$/);
  await page.getByLabel('Decision').selectOption('versicolor|virginica');
  await page.screenshot({path: path.join(plan.shots, 'explanation.png'), fullPage: true});
});

onPage('an explanation agrees with the prediction where values below the threshold mean the first category', {}, async (page) => {
  const document = fs.readFileSync(example('iris', 'model.pmml'), 'utf8').replace(' maxWins="true"', '');
  fs.writeFileSync(path.join(plan.models, '.turned'), document);
  fs.renameSync(path.join(plan.models, '.turned'), path.join(plan.models, 'turned.pmml'));
  await page.goto(`${plan.url}#/iris`);
  await page.waitForSelector('a[href="#/turned"]', {timeout: 20000});
  await openModel(page, 'turned');
  await enter(page, inputs('iris', 0));
  await page.waitForSelector('#explanation:not([hidden])');
  assert.equal(await page.locator('#prediction').innerText(), 'setosa');
  assert.equal(await page.locator('#explanation .eyebrow').innerText(), 'Why setosa rather than versicolor');
  assert.match(await page.locator('#explanation .hint').innerText(), /−0\.8481 here; above 0 speaks for versicolor$/);
  assert.match(await page.locator('#explanation .sides').innerText(), /← setosa\s+versicolor →/);
  assert.deepEqual(await page.locator('#explanation .fill.against').count(), 1);  // sepal_length moves it up
  fs.unlinkSync(path.join(plan.models, 'turned.pmml'));
});

onPage('what cannot be scored is told at its input', {}, async (page) => {
  await openModel(page, 'iris');
  await enter(page, {...inputs('iris', 0), petal_width: '5%'});
  const control = page.getByLabel('petal_width', {exact: true});
  await page.waitForFunction(() => document.querySelector('[aria-invalid]')?.name === 'petal_width');
  const told = await control.evaluate((found) => found.getAttribute('aria-describedby').split(' ')
    .map((id) => document.getElementById(id).textContent).join(' '));
  assert.match(told, /"5%" is not a number/);
  await control.fill('');
  await page.waitForSelector('.gaps button');
  await page.click('.gaps button');
  assert.equal(await page.evaluate(() => document.activeElement.name), 'petal_width');
});

onPage('findings are told with their remedies', {}, async (page) => {
  await openModel(page, 'broken');
  const text = await page.locator('#findings').innerText();
  for (const part of ['error', 'machine-sign', 'changes scores', 'line 98', 'Remedy: Swap the two categories']) {
    assert.ok(text.includes(part), `${part} in ${text}`);
  }
  await page.click('#model-facts button');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'findings-title');
});

async function checkTable(page) {
  await page.waitForSelector('#download');
  const counts = await page.locator('.tally').allInnerTexts();
  assert.deepEqual(counts.map((text) => text.replace(/\s+/g, ' ')), ['rows 50', 'scored 50', 'missing 0', 'invalid 0']);
  const [download] = await Promise.all([page.waitForEvent('download'), page.click('#download')]);
  assert.equal(download.suggestedFilename(), 'cases-scored.csv');
  assert.equal(fs.readFileSync(await download.path(), 'utf8'), plan.expected.table);
}

onPage('a chosen table is scored, and its rows can be tried', {acceptDownloads: true}, async (page) => {
  await openModel(page, 'iris');
  await page.setInputFiles('#file', example('iris', 'cases.csv'));
  await checkTable(page);
  await page.getByRole('button', {name: 'Try row 3 in the form'}).click();
  await untilScored(page, expectedCells('iris', 2));
});

for (const [name, delimiter] of Object.entries({semicolons: ';', tabs: '\t'})) {
  onPage(`a table with ${name} is scored, too`, {acceptDownloads: true}, async (page) => {
    await openModel(page, 'iris');
    const text = fs.readFileSync(example('iris', 'cases.csv'), 'utf8').replaceAll(',', delimiter);
    await page.setInputFiles('#file', {name: 'cases.csv', mimeType: 'text/csv', buffer: Buffer.from(text)});
    await checkTable(page);
    await page.getByRole('button', {name: 'Try row 3 in the form'}).click();
    await untilScored(page, expectedCells('iris', 2));
  });
}

onPage('a dropped table is scored', {acceptDownloads: true}, async (page) => {
  await openModel(page, 'iris');
  const text = fs.readFileSync(example('iris', 'cases.csv'), 'utf8');
  const dataTransfer = await page.evaluateHandle((content) => {
    const transfer = new DataTransfer();
    transfer.items.add(new File([content], 'cases.csv', {type: 'text/csv'}));
    return transfer;
  }, text);
  await page.dispatchEvent('body', 'dragover', {dataTransfer});
  assert.ok(await page.evaluate(() => document.body.classList.contains('dropping')));
  await page.dispatchEvent('body', 'drop', {dataTransfer});
  await checkTable(page);
});

onPage('a table that cannot be read is told', {expectsErrors: true}, async (page) => {
  await openModel(page, 'iris');
  await page.setInputFiles('#file', {name: 'odd.csv', mimeType: 'text/csv', buffer: Buffer.from('a,b\n1,"2\n')});
  await page.waitForSelector('#table-result .failure');
  assert.match(await page.locator('#table-result .failure').innerText(), /^odd\.csv: .{20}/);
});

onPage('a service that is away is told, and missed until it is back', {expectsErrors: true}, async (page) => {
  await openModel(page, 'iris');
  await page.route('**/model', (route) => route.abort());
  await page.waitForFunction(() => document.getElementById('server').textContent === 'The service does not answer');
  await page.unroute('**/model');
  await page.waitForFunction(() => /ready$/.test(document.getElementById('server').textContent));
  await page.evaluate(() => { location.hash = '#/nothing'; });
  await page.waitForSelector('#notice:not([hidden])');
  assert.equal(await page.locator('#notice-text').innerText(), 'There is no model nothing.');
});

onPage('all works from the keyboard', {}, async (page) => {
  await openModel(page, 'iris');
  await page.evaluate(() => document.activeElement.blur());
  const seen = [];
  const where = () => page.evaluate(() => document.activeElement.name || document.activeElement.id ||
    document.activeElement.textContent.trim());
  const values = inputs('iris', 0);
  for (let step = 0; step < 60; step += 1) {
    await page.keyboard.press('Tab');
    const at = await where();
    if (at === seen[0]) break;
    seen.push(at);
    if (at in values) await page.keyboard.type(values[at]);
    const outlined = await page.evaluate(() => {
      const found = document.activeElement.id === 'file' ? document.querySelector('[for=file]') : document.activeElement;
      return getComputedStyle(found).outlineStyle !== 'none';
    });
    assert.ok(outlined || at === 'BODY' || at === '', `where the keyboard is cannot be seen: ${at}`);
    if (at === 'petal_width') break;
  }
  assert.equal(seen[0], 'Skip to the model');
  await untilScored(page, expectedCells('iris', 0));
  await page.keyboard.press('ArrowDown');  // 2 becomes 1
  assert.equal(await page.getByLabel('petal_width').inputValue(), '1');
  await page.keyboard.press('ArrowUp');
  await untilScored(page, expectedCells('iris', 0));
  const further = [];
  for (let step = 0; step < 12; step += 1) {
    await page.keyboard.press('Tab');
    further.push(await where());
  }
  for (const wanted of ['All results', 'The same from the shell', 'file']) assert.ok(further.includes(wanted), further.join(', '));
});

onPage('text that looks like HTML stays text', {}, async (page) => {
  await openModel(page, 'hostile');
  const values = inputs('iris', 4);
  const {sepal_length: long, ...others} = values;
  await enter(page, {...others, '<b>long</b>': long});
  await page.waitForFunction(() => document.getElementById('prediction')?.textContent === '<img src=x onerror=hacked=1>');
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  assert.equal(await page.locator('main img, main b:not(.finding-more b)').count(), 0);
});

onPage('a model that is replaced underneath is noticed', {}, async (page) => {
  await openModel(page, 'tumour');
  const before = await page.locator('#model-facts code').getAttribute('title');
  await page.getByLabel('mean_radius').fill('16.24');
  const target = path.join(plan.models, 'tumour.pmml');
  const old = fs.readFileSync(target);
  const replace = (content) => {
    fs.writeFileSync(`${target}.new`, content);
    fs.renameSync(`${target}.new`, target);
  };
  replace(old.toString().replace('<PMML', '<!-- another -->\n<PMML'));
  await page.waitForSelector('#notice:not([hidden])', {timeout: 20000});
  const told = await page.locator('#notice-text').innerText();
  const after = await page.locator('#model-facts code').getAttribute('title');
  assert.notEqual(after, before);
  assert.ok(told.includes(before.slice(0, 10)) && told.includes(after.slice(0, 10)), told);
  assert.equal(await page.getByLabel('mean_radius').inputValue(), '16.24');
  assert.equal(await page.evaluate(() => document.activeElement.name), 'mean_radius');
  // A document that does not load leaves the model where it is, and the page says why.
  replace('<PMML>');
  await page.waitForSelector('#problem:not([hidden])', {timeout: 20000});
  assert.match(await page.locator('#problem').innerText(), /^A newer document is refused/);
  assert.equal(await page.locator('#model-facts code').getAttribute('title'), after);
  replace(old);
  await page.waitForSelector('#problem', {state: 'hidden', timeout: 20000});
});

for (const [name, options] of Object.entries({
  light: {colorScheme: 'light'},
  dark: {colorScheme: 'dark'},
  phone: {colorScheme: 'light', viewport: {width: 360, height: 740}, isMobile: true, hasTouch: true},
  'phone-dark': {colorScheme: 'dark', viewport: {width: 360, height: 740}, isMobile: true, hasTouch: true},
})) {
  onPage(`nothing is cut off: ${name}`, options, async (page) => {
    await openModel(page, 'iris');
    await enter(page, inputs('iris', 0));
    await untilScored(page, expectedCells('iris', 0));
    await page.setInputFiles('#file', example('iris', 'cases.csv'));
    await page.waitForSelector('#download');
    const width = await page.evaluate(() => document.documentElement.scrollWidth);
    assert.ok(width <= page.viewportSize().width, `${width} wide`);
    const chosen = await page.locator('[aria-current]').boundingBox();
    assert.ok(chosen.x >= 0 && chosen.x + chosen.width <= width, 'the chosen model is out of sight');
    await page.waitForTimeout(300);  // the bars have moved
    await page.screenshot({path: path.join(plan.shots, `${name}.png`), fullPage: true});
  });
}

if (plan.picture) {
  onPage('the picture of the documentation', {isPicture: true, viewport: {width: 1200, height: 880}}, async (page) => {
    await openModel(page, 'iris');
    await enter(page, inputs('iris', 0));
    await untilScored(page, expectedCells('iris', 0));
    await page.setInputFiles('#file', example('iris', 'cases.csv'));
    await page.waitForSelector('#download');
    await page.evaluate(() => { document.activeElement.blur(); window.scrollTo(0, 0); });
    await page.waitForTimeout(300);
    await page.screenshot({path: plan.picture});
  });
}
