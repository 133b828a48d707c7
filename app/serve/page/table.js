'use strict';

// Scoring a table that is dropped or chosen: the answer is a download, its counts and its first rows.

const previewRows = 5;

// delimiterOf(TEXT): what separates the cells of a table: commas, or semicolons or tabs where its first line has no
// commas.
function delimiterOf(text) {
  const [line] = text.split(/[\r\n]/, 1);
  return [',', ';', '\t'].find((mark) => line.includes(mark)) ?? ',';
}

// eachRow(TEXT, DELIMITER): the rows of a CSV text, one after the other, as lists of cells; quoted as in RFC 4180.
function* eachRow(text, delimiter) {
  const cell = new RegExp(`("(?:[^"]|"")*"|[^${delimiter}\r\n]*)(${delimiter}|\r?\n|\r|$)`, 'y');
  let row = [];
  while (cell.lastIndex < text.length) {
    const match = cell.exec(text);
    if (!match) return;  // a quotation mark within a cell: the service would have refused it
    row.push(match[1].startsWith('"') ? match[1].slice(1, -1).replaceAll('""', '"') : match[1]);
    const ends = match[2] !== delimiter;
    if (!ends && cell.lastIndex < text.length) continue;
    if (!ends) row.push('');
    yield row;
    row = [];
  }
}

// The first rows of a table, and how many of all ended how.
function summaryOf(text) {
  const first = [];
  const counts = {rows: 0, scored: 0, missing: 0, invalid: 0};
  const kinds = {0: 'scored', 90029: 'missing', 90027: 'invalid'};
  let status = -1;
  for (const row of eachRow(text, ',')) {
    if (first.length <= previewRows) first.push(row);
    if (first.length === 1) {
      status = row.lastIndexOf('status');
      continue;
    }
    counts.rows += 1;
    if (row[status] in kinds) counts[kinds[row[status]]] += 1;
  }
  return {first, counts};
}

function firstRows(text, delimiter) {
  const rows = [];
  for (const row of eachRow(text, delimiter)) {
    if (rows.push(row) > previewRows) break;
  }
  return rows;
}

function countList(counts) {
  const shown = (name, value, kind) => element('div', {class: `tally ${kind}`},
    element('dt', {}, name), element('dd', {}, value.toLocaleString('en')));
  return element('dl', {class: 'tallies'},
    shown('rows', counts.rows, ''),
    shown('scored', counts.scored, 'good'),
    shown('missing', counts.missing, counts.missing ? 'warn' : ''),
    shown('invalid', counts.invalid, counts.invalid ? 'bad' : ''));
}

// The first rows; each can be taken into the form, where it can be varied.
function preview(input, output, onTake) {
  const header = output[0];
  const body = output.slice(1, previewRows + 1).map((row, place) => element('tr', {},
    element('th', {scope: 'row'}, element('button', {
      type: 'button', class: 'quiet', onclick: () => onTake(input[0], input[place + 1]),
      'aria-label': `Try row ${place + 1} in the form`,
    }, 'Try')),
    row.map((cell) => element('td', {title: cell}, jsonNumber.test(cell) ? rounded(Number(cell)) : cell))));
  return [
    element('p', {class: 'hint'}, `The first ${counted(body.length, 'row')}, with rounded numbers. Try one in the form.`),
    element('div', {class: 'scroll', tabIndex: 0, role: 'region', 'aria-label': 'The first scored rows'},
      element('table', {},
        element('thead', {}, element('tr', {},
          element('td'), header.map((cell) => element('th', {scope: 'col'}, cell)))),
        element('tbody', {}, body)))];
}

// beginningOf(FILE): enough of it for its first rows.
function beginningOf(file) {
  return file.slice(0, 1 << 20).text();
}

// showTable(PLACE, FILE, BLOB, INPUT, ON_TAKE): what became of the file, whose first rows are INPUT. Returns the
// address of the download, to be revoked when it is replaced.
async function showTable(place, file, blob, input, onTake) {
  const {first, counts} = summaryOf(await blob.text());
  const address = URL.createObjectURL(blob);
  const name = `${file.name.replace(/\.csv$/i, '')}-scored.csv`;
  place.replaceChildren(element('div', {class: 'done'},
    countList(counts),
    element('a', {class: 'button primary', id: 'download', href: address, download: name}, `Download ${name}`)),
  ...(first.length > 1 ? preview(input, first, onTake) : []));
  return address;
}
