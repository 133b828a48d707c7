"""How a model gets to the workers of a cluster: its document once, loaded once in each process."""

from __future__ import annotations

import hashlib
import threading
from collections import OrderedDict
from collections.abc import Callable
from typing import Any, NamedTuple

from ._model import CODES, TEXTS, WHOLES, Model

_KEPT_MODELS = 8  # in a process, the last used

_models: OrderedDict[str, Model] = OrderedDict()
_lock = threading.Lock()
loads = 0  #: how many models this process has loaded that were shipped to it


class Shipment(NamedTuple):
    """What a model is made of elsewhere. Shipments with one key make the same model."""

    key: str
    document: bytes
    name: str
    options: dict[str, Any]


def pack(model: Model) -> Shipment:
    """The shipment of a model, which is used itself in this process."""
    how = hashlib.sha256(repr((model._name, sorted(model._options.items()))).encode())
    key = f"svmscore-model-{model.sha256}-{how.hexdigest()[:16]}"
    with _lock:
        _keep(key, model)
    return Shipment(key, model._document, model._name, model._options)


def unpack(key: str, fetch: Callable[[], Shipment]) -> Model:
    """The model of a key: the process's own, or else loaded from what `fetch` gives. [any thread]"""
    global loads
    with _lock:  # while one thread loads, the others wait for its model
        model = _models.get(key)
        if model is None:
            shipment = fetch()
            model = Model(shipment.document, shipment.name, shipment.options)
            loads += 1
        _keep(key, model)
    return model


def _keep(key: str, model: Model) -> None:
    _models[key] = model
    _models.move_to_end(key)
    while len(_models) > _KEPT_MODELS:
        _models.popitem(last=False)


def column_types(model: Model, columns: str, decisions: bool, reasons: bool) -> dict[str, str]:
    """Of each column of scores "text", "whole", "number" or "truth", whatever its values are."""
    of_categories = {"i": "whole", "f": "number", "b": "truth"}.get(
        model._classes.dtype.kind, "text"
    )
    types = {TEXTS: "text", CODES: of_categories, WHOLES: "whole"}
    return {
        name: types.get(kind, "number")
        for name, _, kind in model._plan_of(columns, decisions, reasons).outputs
    }
