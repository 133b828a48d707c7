'use strict';

// Scoring a table that is dropped or chosen: the answer is a download, its counts and its first rows.

const previewRows = 5;

// rowsOf(TEXT, LIMIT): the cells of the first LIMIT rows of a CSV text, quoted as in RFC 4180.
function rowsOf(text, limit = Infinity) {
  const rows = [];
  const cell = /("(?:[^"]|"")*"|[^,\r\n]*)(,|\r?\n|\r|$)/y;
  let row = [];
  for (cell.lastIndex = 0; cell.lastIndex < text.length && rows.length < limit;) {
    const match = cell.exec(text);
    if (!match) break;
    row.push(match[1].startsWith('"') ? match[1].slice(1, -1).replaceAll('""', '"') : match[1]);
    if (match[2] === ',' && cell.lastIndex < text.length) continue;
    if (match[2] === ',') row.push('');
    rows.push(row);
    row = [];
  }
  return rows;
}

// countsOf(ROWS): how many rows ended how; ROWS begin with the header. Null without a status column.
function countsOf(rows) {
  const place = rows[0]?.lastIndexOf('status') ?? -1;
  if (place < 0) return null;
  const counts = {rows: rows.length - 1, scored: 0, missing: 0, invalid: 0};
  for (const row of rows.slice(1)) {
    const kind = {0: 'scored', 90029: 'missing', 90027: 'invalid'}[row[place]];
    if (kind) counts[kind] += 1;
  }
  return counts;
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

// showTable(PLACE, FILE, BLOB, ON_TAKE): what became of the file. Returns the address of the download,
// to be revoked when it is replaced.
async function showTable(place, file, blob, onTake) {
  const text = await blob.text();
  const rows = rowsOf(text);
  const counts = countsOf(rows);
  const input = rowsOf(await file.slice(0, 1 << 20).text(), previewRows + 1);
  const address = URL.createObjectURL(blob);
  const name = `${file.name.replace(/\.csv$/i, '')}-scored.csv`;
  place.replaceChildren(element('div', {class: 'done'},
    counts ? countList(counts) : null,
    element('a', {class: 'button primary', id: 'download', href: address, download: name}, `Download ${name}`)),
  ...(rows.length > 1 ? preview(input, rows, onTake) : []));
  return address;
}
