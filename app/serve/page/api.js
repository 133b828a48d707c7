'use strict';

// What the page asks the service. Addresses are relative, so that the page also works below a path of
// a reverse proxy.

class ServiceError extends Error {
  constructor(message, status) {
    super(message);
    this.status = status;
  }
}

// Whole numbers beyond 2^53 keep their digits, as texts.
function numberAsWritten(key, value, context) {
  return typeof value === 'number' && !Number.isSafeInteger(value) && /^-?\d+$/.test(context?.source ?? '')
    ? context.source : value;
}

// send(PATH, OPTIONS): the response, if its status is good. Throws ServiceError with what the service
// says is wrong, or with status 0 where it does not answer.
async function send(path, options = {}) {
  let response;
  try {
    response = await fetch(path, {cache: 'no-store', credentials: 'same-origin', ...options});
  } catch (error) {
    if (error.name === 'AbortError') throw error;
    throw new ServiceError('The service does not answer.', 0);
  }
  if (response.ok) return response;
  let message = `${response.status} ${response.statusText}`.trim();
  try {
    message = JSON.parse(await response.text()).message || message;
  } catch { /* a proxy's page: the status has to do */ }
  throw new ServiceError(message, response.status);
}

const modelPath = (id, rest = '') => `model/${encodeURIComponent(id)}${rest}`;

// Each answer: what the service said, with the checksum of the model that said it.
async function answer(response) {
  return {
    body: JSON.parse(await response.text(), numberAsWritten),
    checksum: response.headers.get('X-Model-SHA256'),
  };
}

const api = {
  models: async () => (await answer(await send('model'))).body.models,
  model: async (id) => answer(await send(modelPath(id))),
  score: async (id, values, signal) => answer(await send(modelPath(id), {
    method: 'POST', signal, headers: {'Content-Type': 'application/json'}, body: scoreBody(values),
  })),
  explain: async (id, values, signal) => answer(await send(modelPath(id, '/explain'), {
    method: 'POST', signal, headers: {'Content-Type': 'application/json'}, body: scoreBody(values),
  })),
  // The scored table, whose last column says why rows failed.
  table: async (id, file, delimiter) => {
    const response = await send(modelPath(id, `/csv?reasons=true&delimiter=${encodeURIComponent(delimiter)}`), {
      method: 'POST', headers: {'Content-Type': 'text/csv'}, body: file,
    });
    return {blob: await response.blob(), checksum: response.headers.get('X-Model-SHA256')};
  },
};

// scoreBody(VALUES): the body of a request for one score; inputs without a value are left out.
function scoreBody(values) {
  return JSON.stringify({arguments: values});
}
