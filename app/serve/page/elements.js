'use strict';

// Making elements. Text from a model or a server only ever becomes a text node or an attribute.

// byId(ID): the element of the page with this id.
const byId = (id) => document.getElementById(id);

// element(TAG, ATTRIBUTES, CHILDREN...): a new element; children are elements and texts, and what is
// null or undefined is left out. `class` and names with a hyphen are attributes, others properties.
function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined) continue;
    if (name in made && !name.includes('-')) made[name] = value;
    else made.setAttribute(name, value);
  }
  made.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return made;
}

const counted = (count, one, more = `${one}s`) => `${count.toLocaleString('en')} ${count === 1 ? one : more}`;
