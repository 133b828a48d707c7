"""arrow_readers.py LIBRARY PROGRAM EXAMPLES: pyarrow, polars and DuckDB hand the examples' cases over to the C
library through the Arrow C Data Interface, by ctypes, and read the scores back: they equal the
program's, for tables of numbers, texts and dictionaries."""
import ctypes
import io
import pathlib
import subprocess
import sys

import duckdb
import polars
import pyarrow
import pyarrow.csv

LIBRARY, PROGRAM, EXAMPLES = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])


class Text(ctypes.Structure):
    _fields_ = [('data', ctypes.c_char_p), ('length', ctypes.c_size_t)]


class Stream(ctypes.Structure):
    """An ArrowArrayStream."""
    _fields_ = [(name, ctypes.c_void_p) for name in
                ('get_schema', 'get_next', 'get_last_error', 'release', 'private_data')]


class ScorerOptions(ctypes.Structure):
    _fields_ = [('size', ctypes.c_size_t), ('columns', ctypes.c_int32),
                ('decisions', ctypes.c_int32), ('threads', ctypes.c_int32),
                ('reasons', ctypes.c_int32),
                ('category_codes', ctypes.c_int32), ('missing_texts', ctypes.c_void_p),
                ('missing_text_count', ctypes.c_size_t)]


library = ctypes.CDLL(LIBRARY)
library.svmscore_error_message.restype = Text
pointer = ctypes.c_void_p
library.svmscore_error_message.argtypes = [pointer]
library.svmscore_load_file.argtypes = [ctypes.c_char_p, ctypes.c_size_t, pointer, pointer, pointer]
library.svmscore_scorer_new.argtypes = [pointer] * 4
library.svmscore_score_stream.argtypes = [pointer] * 4
library.svmscore_scorer_free.argtypes = [pointer]
library.svmscore_model_free.argtypes = [pointer]
unwrap = ctypes.pythonapi.PyCapsule_GetPointer
unwrap.restype, unwrap.argtypes = ctypes.c_void_p, [ctypes.py_object, ctypes.c_char_p]


def check(call, *arguments):
    error = pointer()
    if call(*arguments, ctypes.byref(error)) != 0:
        raise RuntimeError(library.svmscore_error_message(error).data.decode())


def score(model, table, codes):
    """The scores of anything that exports a stream, as a pyarrow table."""
    scorer, scored = pointer(), Stream()
    options = ScorerOptions(ctypes.sizeof(ScorerOptions), 0, 1, 2, 0, codes, None, 0)
    check(library.svmscore_scorer_new, model, ctypes.byref(options), ctypes.byref(scorer))
    capsule = table.__arrow_c_stream__()
    cases = unwrap(capsule, b'arrow_array_stream')
    check(library.svmscore_score_stream, scorer, cases, ctypes.byref(scored))
    library.svmscore_scorer_free(scorer)
    return pyarrow.RecordBatchReader._import_from_c(ctypes.addressof(scored)).read_all()


def plain(table):
    """Categories as texts."""
    return pyarrow.table({name: column.cast(pyarrow.large_string())
                          if pyarrow.types.is_dictionary(column.type) or
                          pyarrow.types.is_string(column.type) else column
                          for name, column in zip(table.column_names, table.columns)})


def tables_of(path):
    """The same cases, as different readers and types give them."""
    cases = pyarrow.csv.read_csv(path)
    texts = pyarrow.table({name: column.cast(pyarrow.string())
                           for name, column in zip(cases.column_names, cases.columns)})
    yield 'pyarrow, numbers', cases
    yield 'pyarrow, texts', texts
    yield 'pyarrow, dictionaries', pyarrow.table(
        {name: column.dictionary_encode() for name, column in zip(texts.column_names, texts.columns)})
    yield 'pyarrow, small batches', pyarrow.Table.from_batches(cases.slice(1).to_batches(7), cases.schema)
    yield 'polars, numbers', polars.read_csv(path)
    yield 'polars, texts', polars.read_csv(path, infer_schema=False)
    yield 'polars, categories', polars.read_csv(path, infer_schema=False).cast(polars.Categorical)
    yield 'DuckDB', duckdb.sql(f"select * from read_csv('{path}')")
    yield 'DuckDB, texts', duckdb.sql(f"select * from read_csv('{path}', all_varchar = true)")


def main():
    compared = 0
    for folder in sorted(path.parent for path in EXAMPLES.glob('*/expected.csv')):
        document = str(folder / 'model.pmml').encode()
        model = pointer()
        check(library.svmscore_load_file, document, len(document), None, ctypes.byref(model))
        written = subprocess.run(
            [PROGRAM, 'score', folder / 'model.pmml', folder / 'cases.csv', '--decisions'],
            check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
        for name, table in tables_of(str(folder / 'cases.csv')):
            for codes in (0, 1):
                scored = plain(score(model, table, codes))
                options = pyarrow.csv.ConvertOptions(
                    column_types=scored.schema, strings_can_be_null=True)
                expected = pyarrow.csv.read_csv(io.BytesIO(written), convert_options=options)
                expected = expected.slice(expected.num_rows - scored.num_rows).combine_chunks()
                if not scored.combine_chunks().equals(expected):
                    sys.exit(f'{folder.name}, {name}: other scores than the program')
                # What comes back is whole for the others too.
                if polars.from_arrow(scored).height != scored.num_rows:
                    sys.exit(f'{folder.name}, {name}: polars reads another number of rows')
                if duckdb.sql('select count(*) from scored').fetchall()[0][0] != scored.num_rows:
                    sys.exit(f'{folder.name}, {name}: DuckDB reads another number of rows')
                compared += 1
        nested = pyarrow.table({name: [[1.0]] for name in
                                pyarrow.csv.read_csv(folder / 'cases.csv').column_names})
        try:
            score(model, nested, 0)
            sys.exit('a nested column was read')
        except RuntimeError as refused:
            assert 'list' in str(refused), refused
        library.svmscore_model_free(model)
    print(f'{compared} tables score as by the program')
    return compared < 60


sys.exit(main())
