'use strict';

// The form: one control for each input of a model. An empty control is a missing value.

const numericTypes = new Set(['integer', 'float', 'double']);
const isNumber = (field) => field.opType === 'continuous' || (numericTypes.has(field.dataType) && !field.categories.length);

// The inputs of a model; the values that one lists are categories unless they are intervals of numbers.
function fieldsOf(schema) {
  return schema.inputFields.map((field) => ({
    id: field.id,
    dataType: field.dataType,
    opType: field.opType,
    intervals: field.intervals ?? [],
    categories: field.opType === 'continuous' ? [] : field.values ?? [],
  }));
}

const typeWords = {integer: 'whole number', float: 'number', double: 'number', boolean: 'true or false'};

function hintOf(field) {
  if (field.categories.length) return `one of ${field.categories.length}`;
  const word = typeWords[field.dataType] ?? (field.opType === 'continuous' ? 'number' : field.dataType);
  return [word, field.intervals.map(intervalText).join(' or ')].filter(Boolean).join(', ');
}

// "4.3 to 7.9"; of an open end, which is no value itself, that it is above or below.
function intervalText({left, right, leftClosed, rightClosed}) {
  const text = (bound) => bound.toLocaleString('en', {maximumSignificantDigits: 17});
  if (left !== null && right !== null && leftClosed && rightClosed) return `${text(left)} to ${text(right)}`;
  return [
    left === null ? null : `${leftClosed ? 'at least' : 'above'} ${text(left)}`,
    right === null ? null : `${rightClosed ? 'at most' : 'below'} ${text(right)}`,
  ].filter(Boolean).join(', ');
}

function choice(field, text) {
  const categories = field.categories.length ? field.categories : ['true', 'false'];
  const options = categories.map((value) => element('option', {value: `=${value}`}, value));
  // "=" keeps a category whose text is empty apart from a value that is missing.
  const control = element('select', {}, element('option', {value: ''}, 'missing'), options);
  control.value = text === undefined ? '' : `=${text}`;
  return control;
}

// More categories than anybody reads in a list are typed, with the matching ones shown below.
const longList = 200;

function typed(field, number, text, id) {
  const control = element('input', {type: 'text', value: text ?? '', spellcheck: false, placeholder: 'missing'});
  if (number) control.inputMode = field.dataType === 'integer' ? 'numeric' : 'decimal';
  if (number) control.addEventListener('keydown', stepDigit);
  const suggestions = field.categories.length
    ? element('datalist', {id: `${id}-list`}, field.categories.map((value) => element('option', {value}))) : null;
  if (suggestions) control.setAttribute('list', suggestions.id);
  return [control, suggestions];
}

// Arrow keys change the last digit that is written, with Shift the one before it.
function stepDigit(event) {
  if (event.key !== 'ArrowUp' && event.key !== 'ArrowDown') return;
  const control = event.target;
  const parts = /^\s*(-?\d*)(?:\.(\d*))?\s*$/.exec(control.value);
  if (!parts) return;
  event.preventDefault();
  const digits = parts[2]?.length ?? 0;
  const scale = 10 ** digits;
  const step = (event.shiftKey ? 10 : 1) * (event.key === 'ArrowUp' ? 1 : -1);
  const next = (Math.round(Number(control.value || 0) * scale) + step) / scale;
  if (!Number.isFinite(next) || Math.abs(next * scale) > Number.MAX_SAFE_INTEGER) return;
  control.value = next.toFixed(digits);
  control.dispatchEvent(new Event('input', {bubbles: true}));
}

// buildForm(FORM, FIELDS, TEXTS): fills the form with a control for each field; TEXTS are what was
// entered before, by the name of the field.
function buildForm(form, fields, texts) {
  // What is the same everywhere is told once, below the form; for those who hear the page, everywhere.
  const hints = new Set(fields.map(hintOf));
  form.classList.toggle('alike', fields.length > 1 && hints.size === 1);
  form.classList.toggle('many', fields.length > 24);
  form.replaceChildren(...fields.map((field, place) => {
    const id = `input-${place}`;
    const listed = field.dataType === 'boolean' || (field.categories.length > 0 && field.categories.length <= longList);
    const [control, suggestions] = listed
      ? [choice(field, texts[field.id]), null]
      : typed(field, isNumber(field), texts[field.id], id);
    control.id = id;
    control.name = field.id;
    control.setAttribute('aria-describedby', `${id}-hint ${id}-error`);
    const hint = hintOf(field);
    return element('div', {class: 'field'},
      element('label', {htmlFor: id}, field.id),
      control, suggestions,
      element('p', {class: hint === 'number' ? 'hint plain' : 'hint', id: `${id}-hint`}, hint),
      element('p', {class: 'error', id: `${id}-error`, hidden: true}));
  }));
}

// textsOf(FORM): what is entered, by the name of the field; what is missing is left out.
function textsOf(form) {
  const texts = {};
  for (const control of form.elements) {
    if (control.value === '') continue;
    texts[control.name] = control.tagName === 'SELECT' ? control.value.slice(1) : control.value;
  }
  return texts;
}

const jsonNumber = /^-?(0|[1-9]\d*)(\.\d+)?([eE][+-]?\d+)?$/;

// valuesOf(FIELDS, TEXTS): what is sent. A text that is no number is sent as it is: the service says
// what is wrong with it, in the words of the program.
function valuesOf(fields, texts) {
  const values = {};
  for (const field of fields) {
    const text = texts[field.id];
    if (text === undefined) continue;
    const number = Number(text);
    const plain = isNumber(field) && jsonNumber.test(text.trim()) && Number.isFinite(number) &&
      !(Number.isInteger(number) && !Number.isSafeInteger(number));
    if (plain) values[field.id] = number;
    else if (field.dataType === 'boolean' && (text === 'true' || text === 'false')) values[field.id] = text === 'true';
    else values[field.id] = text;
  }
  return values;
}

// fillForm(FORM, TEXTS): enters these texts, and leaves the inputs that TEXTS does not name missing.
function fillForm(form, texts) {
  for (const control of form.elements) {
    const text = texts[control.name];
    if (control.tagName !== 'SELECT') control.value = text ?? '';
    else control.value = text === undefined ? '' : `=${text}`;
    if (control.tagName === 'SELECT' && control.selectedIndex < 0) control.value = '';
  }
}

// markErrors(FORM, REASONS): shows the reasons, by the name of the input, at their inputs.
function markErrors(form, reasons) {
  for (const control of form.elements) {
    const error = byId(`${control.id}-error`);
    const reason = reasons[control.name];
    control.toggleAttribute('aria-invalid', false);
    if (reason) control.setAttribute('aria-invalid', 'true');
    error.hidden = !reason;
    error.textContent = reason ?? '';
  }
}
