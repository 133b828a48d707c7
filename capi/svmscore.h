/* svmscore: scoring with PMML support vector machine models, from C99 and C++17.
 *
 * Load a model, make a scorer, score. docs/c-interface.md shows each step; examples/capi holds
 * whole programs.
 *
 * Rules that hold for every function here
 * - Functions that can fail return SVMSCORE_OK or the kind of what failed, and take as their last
 *   argument a place for the error, which may be null. On success nothing is written there: let it
 *   begin as a null pointer. On failure a new error is, for svmscore_error_free; one that the place
 *   held before is not freed. Nothing else is written then, and what the caller handed over stays
 *   the caller's.
 * - No function throws, ends the process, prints, or changes the locale, signal handlers, the
 *   current folder or the environment. (The trace that the environment variable SVMSCORE_LOG asks
 *   for is printed.) SVMSCORE_ISA, SVMSCORE_CERTIFY, SVMSCORE_PLUGIN and SVMSCORE_LOG are
 *   read once.
 * - Structs begin with `size`, their size in bytes: the caller sets it, best by SVMSCORE_INIT. A
 *   library reads the members that the size covers and takes the others as 0; members that it does
 *   not know yet must be 0. Where a function takes an array of such structs, every element has the
 *   size of the first.
 * - Texts are UTF-8 with a length, and need no NUL at their end; SVMSCORE_NUL_ENDED as a length
 *   means that they have one. Texts that the library returns have one beyond their length. A text
 *   that is null is an empty one.
 * - A null pointer where none is allowed, a size that no version of a struct had, a number that no
 *   constant stands for, and an index that is too large are SVMSCORE_ARGUMENT; but what is wrong
 *   with one column is SVMSCORE_TABLE, all but its size.
 * - Memory that runs out is SVMSCORE_MEMORY: everything is as it was before the call.
 *
 * The comment of a function ends with: [threads] Owns: ... Lives: ... Fails: ... without the parts
 * that do not apply. Threads: [any thread]; [one thread] for each scorer, stream or error, one at
 * a time. A process that has loaded a model may fork, and both sides go on. */
#ifndef CAPI_SVMSCORE_H_
#define CAPI_SVMSCORE_H_

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define SVMSCORE_API __attribute__((visibility("default")))
#else
#define SVMSCORE_API
#endif

/* The version of this header. */
#define SVMSCORE_VERSION_MAJOR 0
#define SVMSCORE_VERSION_MINOR 1
#define SVMSCORE_VERSION_PATCH 0

/* A length that says: the text ends with a NUL. */
#define SVMSCORE_NUL_ENDED ((size_t)-1)
/* The size of a buffer that the caller does not know. */
#define SVMSCORE_UNKNOWN_SIZE ((size_t)-1)

/* --- Kinds of failure ----------------------------------------------------------------------- */

enum svmscore_kind {
  SVMSCORE_OK = 0,
  SVMSCORE_ARGUMENT = 1, /* the call is wrong: see above */
  SVMSCORE_DOCUMENT = 2, /* the document cannot be read, used, or used in this way */
  SVMSCORE_TABLE = 3,    /* a column is missing, of a type that does not fit, or broken */
  SVMSCORE_MEMORY = 4,   /* memory ran out */
  SVMSCORE_SYSTEM = 5,   /* a file, the plug-in or the instruction set cannot be used */
  SVMSCORE_INTERNAL = 6  /* a fault of this library */
};

typedef struct svmscore_model svmscore_model;   /* a loaded document */
typedef struct svmscore_scorer svmscore_scorer; /* the working memory of whoever scores */
typedef struct svmscore_error svmscore_error;   /* why a call failed */

/* A text that the library returns. */
typedef struct svmscore_text {
  const char* data; /* never null in what the library returns; a NUL follows */
  size_t length;    /* bytes */
} svmscore_text;

/* The value for a struct of that type before its members are set: its size, all else 0. In C it
 * can only begin a variable, as in `svmscore_table table = SVMSCORE_INIT(svmscore_table);`. */
#ifdef __cplusplus
extern "C++" {
template <typename Struct>
inline Struct svmscore_init_() {
  Struct value = Struct();
  value.size = sizeof(Struct);
  return value;
}
}
#define SVMSCORE_INIT(type) (svmscore_init_<type>())
#else
#define SVMSCORE_INIT(type) \
  { .size = sizeof(type) }
#endif

/* The kind, as the call returned it. For these functions: [one thread] Lives: what is returned, as
 * long as the error. Fails: never; of a null error the kind is SVMSCORE_OK, the code 0, and the
 * texts are empty. */
SVMSCORE_API int svmscore_error_kind(const svmscore_error* error);
/* The code of the message, such as 260311; 0 where the catalogue of messages has none. */
SVMSCORE_API long svmscore_error_code(const svmscore_error* error);
/* What is wrong, in one sentence, without its place. */
SVMSCORE_API svmscore_text svmscore_error_sentence(const svmscore_error* error);
/* Where: an element and a line of the document, the name of a column or of an argument; may be
 * empty. */
SVMSCORE_API svmscore_text svmscore_error_place(const svmscore_error* error);
/* What to do about it; may be empty. */
SVMSCORE_API svmscore_text svmscore_error_remedy(const svmscore_error* error);
/* All of that on one line. */
SVMSCORE_API svmscore_text svmscore_error_message(const svmscore_error* error);
/* Null is allowed.
 * [one thread] Owns: the library, from here on. Fails: never. */
SVMSCORE_API void svmscore_error_free(svmscore_error* error);

/* --- The library ---------------------------------------------------------------------------- */

/* The version of the library, such as "0.1.0".
 * [any thread] Lives: as long as the process. Fails: never. */
SVMSCORE_API const char* svmscore_version(void);
/* What scoring computes with: "plain", "sse2", "avx2" or "avx512"; the best that this CPU has, or
 * what SVMSCORE_ISA names. Where it names none that can be used, loading fails (260317). Where only
 * votes are wanted, estimates with proven error bounds decide most of them, with the same results;
 * not if SVMSCORE_CERTIFY is "off".
 * [any thread] Lives: as long as the process. Fails: never. */
SVMSCORE_API const char* svmscore_instruction_set(void);
/* Frees a text that a function of this header says is the caller's. Null is allowed.
 * [any thread] Owns: the library, from here on. Fails: never. */
SVMSCORE_API void svmscore_text_free(char* text);

/* --- Loading -------------------------------------------------------------------------------- */

/* How a document is read. */
enum svmscore_mode {
  SVMSCORE_DEFAULT = 0, /* as its author meant it; every guess and loss is a remark */
  SVMSCORE_AS_IS = 1,   /* to the letter */
  SVMSCORE_STRICT = 2   /* what is guessed, lost or wrong is refused */
};

/* What becomes of a case with a missing value. */
enum svmscore_missing_policy {
  SVMSCORE_MISSING_AS_MODEL = 0, /* what the model says */
  SVMSCORE_MISSING_REPLACE = 1,  /* it is replaced where the model says by what */
  SVMSCORE_MISSING_PREDICT = 2,  /* there is no prediction */
  SVMSCORE_MISSING_FAIL = 3      /* the case fails */
};

/* The largest document, table of a document, and so on that is accepted; the names are those of
 * `svmscore score --limit`. */
typedef struct svmscore_limit {
  const char* name; /* ends with a NUL */
  uint64_t most;
} svmscore_limit;

/* Takes one remark on how a document is read. Called by the thread that loads, during the call. It
 * must return: no exception, no longjmp. */
typedef void svmscore_remark_function(void* context, const char* text, size_t length);

typedef struct svmscore_load_options {
  size_t size;
  int32_t mode;                 /* enum svmscore_mode */
  int32_t missing_policy;       /* enum svmscore_missing_policy */
  const svmscore_limit* limits; /* null: those that reliability.md lists */
  size_t limit_count;
  const char* plugin_path; /* null: the plug-in that lies beside the library */
  size_t plugin_path_length;
  const char* name; /* how messages call a document from memory; null: "document" */
  size_t name_length;
  svmscore_remark_function*
      remark; /* null: remarks are not told, but kept: svmscore_model_remark */
  void* remark_context;
  int32_t prediction_only; /* not 0: confidence, probabilities and intervals are not computed */
} svmscore_load_options;

/* Loads the document of a file, compressed by gzip or zstd or not, or of memory. `options` may be
 * null. The model may be used by any number of threads at once from then on.
 * [any thread] Owns: the caller the model: svmscore_model_free. Lives: arguments, for the call.
 * Fails: SVMSCORE_DOCUMENT, with code and place; SVMSCORE_SYSTEM: the file cannot be read
 * (260301), no plug-in (260305), SVMSCORE_ISA (260317). */
SVMSCORE_API int svmscore_load_file(const char* path, size_t path_length,
                                    const svmscore_load_options* options, svmscore_model** model,
                                    svmscore_error** error);
SVMSCORE_API int svmscore_load_memory(const void* data, size_t data_size,
                                      const svmscore_load_options* options, svmscore_model** model,
                                      svmscore_error** error);
/* Null is allowed. Scorers and streams of the model go on.
 * [any thread], after the last other call with this model. Owns: the library, from here on. Fails:
 * never. */
SVMSCORE_API void svmscore_model_free(svmscore_model* model);

/* --- What a model is ------------------------------------------------------------------------ */

enum svmscore_function { SVMSCORE_CLASSIFICATION = 0, SVMSCORE_REGRESSION = 1 };

enum svmscore_method {
  SVMSCORE_METHOD_REGRESSION = 0,
  SVMSCORE_METHOD_BINARY = 1,          /* two categories, one machine */
  SVMSCORE_METHOD_ONE_AGAINST_ONE = 2, /* a machine for each pair of categories */
  SVMSCORE_METHOD_ONE_AGAINST_ALL = 3  /* a machine for each category */
};

/* What the probabilities of a classification are. */
enum svmscore_percentages {
  SVMSCORE_PERCENTAGES_NONE = 0,
  SVMSCORE_PERCENTAGES_VOTES = 1,     /* the share of the machines that vote for a category */
  SVMSCORE_PERCENTAGES_CALIBRATED = 2 /* probabilities */
};

typedef struct svmscore_model_facts {
  size_t size;
  int32_t function;          /* enum svmscore_function */
  int32_t method;            /* enum svmscore_method */
  int32_t percentages;       /* enum svmscore_percentages */
  int32_t interval;          /* 1: a regression with a standard deviation and an interval */
  svmscore_text target;      /* the name of the target field */
  svmscore_text target_type; /* its data type, as documents spell it: "string", "double", ... */
  size_t category_count;     /* of the target */
  size_t input_count;
  size_t needed_count; /* of the inputs, the first so many are needed */
  size_t machine_count;
  size_t remark_count;
  svmscore_text sha256; /* of the bytes of the file, or of memory: 64 hexadecimal digits */
} svmscore_model_facts;

/* What an input is for. */
enum svmscore_role {
  SVMSCORE_NEEDED = 0, /* the model reads it: a table without it is refused */
  SVMSCORE_NOT_NEEDED =
      1, /* declared as an input and not read; an invalid value fails a case all the same */
  SVMSCORE_FOR_OUTPUT = 2 /* read by output fields only, such as the target, for a residual */
};

typedef struct svmscore_input {
  size_t size;
  svmscore_text name;
  svmscore_text type;    /* the data type, as documents spell it */
  svmscore_text op_type; /* "continuous", "ordinal", "cyclic" or "categorical" */
  int32_t role;          /* enum svmscore_role */
  int32_t has_replacement;
  svmscore_text replacement;       /* of a missing value */
  const svmscore_text* categories; /* the values that are listed */
  size_t category_count;
} svmscore_input;

typedef struct svmscore_machine {
  size_t size;
  svmscore_text target;    /* the category that a decision value on its side means; may be empty */
  svmscore_text alternate; /* the other one; empty where it is "not the target" */
  int32_t target_index;    /* positions among the target's categories; -1 where there is none */
  int32_t alternate_index;
} svmscore_machine;

/* Fill `facts`, `input` or `machine`; inputs first those that are needed. `index` counts from 0.
 * For these and the next three: [any thread] Lives: what is returned, as long as the model. Fails:
 * SVMSCORE_ARGUMENT. */
SVMSCORE_API int svmscore_model_get_facts(const svmscore_model* model, svmscore_model_facts* facts,
                                          svmscore_error** error);
SVMSCORE_API int svmscore_model_get_input(const svmscore_model* model, size_t index,
                                          svmscore_input* input, svmscore_error** error);
SVMSCORE_API int svmscore_model_get_machine(const svmscore_model* model, size_t index,
                                            svmscore_machine* machine, svmscore_error** error);
/* The text of a category of the target. */
SVMSCORE_API int svmscore_model_get_category(const svmscore_model* model, size_t index,
                                             svmscore_text* category, svmscore_error** error);
/* What of the document is guessed, lost or wrong: a sentence for each kind, as given to the
 * callback. */
SVMSCORE_API int svmscore_model_get_remark(const svmscore_model* model, size_t index,
                                           svmscore_text* remark, svmscore_error** error);
/* All that `svmscore describe --json` tells, as JSON. `length` may be null.
 * [any thread], one after the other for each model. Owns: the caller the text:
 * svmscore_text_free. */
SVMSCORE_API int svmscore_describe(const svmscore_model* model, char** json, size_t* length,
                                   svmscore_error** error);

/* --- Tables --------------------------------------------------------------------------------- */

/* The type of a column's values: all in the byte order and format of this machine. */
enum svmscore_type {
  SVMSCORE_NULL = 0, /* every value is missing; no data */
  SVMSCORE_F64 = 1,  /* double */
  SVMSCORE_F32 = 2,  /* float */
  SVMSCORE_I64 = 3,
  SVMSCORE_I32 = 4,
  SVMSCORE_I16 = 5,
  SVMSCORE_I8 = 6,
  SVMSCORE_U64 = 7,
  SVMSCORE_U32 = 8,
  SVMSCORE_U16 = 9,
  SVMSCORE_U8 = 10,
  SVMSCORE_BOOL = 11,      /* bits, the least significant of a byte first */
  SVMSCORE_BOOL8 = 12,     /* bytes: 0 or not */
  SVMSCORE_UTF8 = 13,      /* texts by 32-bit offsets */
  SVMSCORE_UTF8_64 = 14,   /* texts by 64-bit offsets */
  SVMSCORE_DICTIONARY = 15 /* codes: positions in `dictionary` */
};

/* Values of one name. Value i is missing where `validity` is there and its bit `offset` + i is 0,
 * bits counted from the least significant of the first byte. Else, with k = `offset` + i:
 * - numbers, BOOL8 and codes lie at `data` + k * `stride`, in any alignment;
 * - a BOOL is bit k of `data`;
 * - a text is the bytes of `data` from offset k to offset k + 1 of `offsets`, which never fall.
 *   This is the memory layout of an Arrow array. A number is what its shortest text would be in a
 *   file of cases: NaN and infinities are invalid values, not missing ones. A bool is 1 or 0 for a
 *   field of numbers, and true or false for any other. A number for a field of dates or times is
 *   refused: those are texts. */
typedef struct svmscore_column {
  size_t size;
  const char* name;
  size_t name_length;
  int32_t type;      /* enum svmscore_type */
  int32_t code_type; /* of a DICTIONARY: an integer type */
  size_t length;     /* values */
  const void* data;
  size_t data_size;        /* bytes of `data`, or SVMSCORE_UNKNOWN_SIZE */
  size_t stride;           /* bytes from a value to the next; 0: they lie one after the other */
  size_t offset;           /* values that are passed over, at the beginning */
  const uint8_t* validity; /* null: no value is missing */
  size_t validity_size;    /* bytes, or SVMSCORE_UNKNOWN_SIZE */
  const void* offsets;     /* of texts: offset + length + 1 of them */
  size_t offsets_size;     /* bytes, or SVMSCORE_UNKNOWN_SIZE */
  const struct svmscore_column* dictionary; /* of any type but DICTIONARY; its name means nothing */
} svmscore_column;

/* Which of the columns of a score are wanted: as `svmscore score --columns`. */
enum svmscore_choice {
  SVMSCORE_COLUMNS_AUTO = 0, /* the document's output fields, or else what the model computes */
  SVMSCORE_COLUMNS_RAW = 1,  /* what the model computes, under plain names */
  SVMSCORE_COLUMNS_ALL = 2   /* every column, under plain names */
};

#define SVMSCORE_ALL_CORES (-1)

typedef struct svmscore_scorer_options {
  size_t size;
  int32_t columns;   /* enum svmscore_choice */
  int32_t decisions; /* not 0: with the decision value of every machine */
  int32_t threads;   /* for tables: 0 and 1 mean one, SVMSCORE_ALL_CORES what the process may use */
  int32_t reasons;   /* not 0: with the column `reason` at the end: why a case failed */
  int32_t category_codes; /* not 0: predicted categories are a DICTIONARY, not texts */
  /* Texts that mean a missing value, whole cells. Null: the empty text alone. */
  const svmscore_text* missing_texts;
  size_t missing_text_count;
} svmscore_scorer_options;

/* Makes the working memory for scoring with `model`. `options` may be null.
 * [any thread] Owns: the caller the scorer: svmscore_scorer_free; the scorer shares the model.
 * Lives: arguments, for the call. Fails: SVMSCORE_ARGUMENT, also for decision values that the
 * plug-in's model does not give. */
SVMSCORE_API int svmscore_scorer_new(const svmscore_model* model,
                                     const svmscore_scorer_options* options,
                                     svmscore_scorer** scorer, svmscore_error** error);
/* Null is allowed. Takes what the scorer returned with it, apart from what was exported.
 * [one thread] Owns: the library, from here on. Fails: never. */
SVMSCORE_API void svmscore_scorer_free(svmscore_scorer* scorer);

typedef struct svmscore_output {
  size_t size;
  svmscore_text name;    /* as `svmscore score` writes it: "prediction", "probability(A)", ... */
  int32_t type;          /* SVMSCORE_F64, I64, UTF8_64 or DICTIONARY, as in a table */
  int32_t of_categories; /* 1: the values are categories of the target */
  const svmscore_text* categories; /* of the target, where the values are such */
  size_t category_count;
} svmscore_output;

/* The columns that scoring gives: first those of the choice, then decision values, `status`, and
 * `reason` where it is wanted.
 * [any thread] Lives: what is returned, as long as the scorer. Fails: SVMSCORE_ARGUMENT; the count
 * never, 0 for null. */
SVMSCORE_API size_t svmscore_scorer_output_count(const svmscore_scorer* scorer);
SVMSCORE_API int svmscore_scorer_get_output(const svmscore_scorer* scorer, size_t index,
                                            svmscore_output* output, svmscore_error** error);

/* A scored table. A row's status is 0, 90027 (an invalid value, or an outcome that cannot be
 * decided) or 90029 (a missing value, or a case that could not be scored). Rows without a
 * prediction have missing values; those of F64 columns are NaN besides. */
typedef struct svmscore_table {
  size_t size;
  size_t row_count;
  size_t column_count;            /* svmscore_scorer_output_count */
  const svmscore_column* columns; /* in that order */
  const int64_t* status;          /* [row_count]: the data of the column `status` */
  uint64_t scored;                /* rows with status 0 */
  uint64_t missing;               /* rows with status 90029 */
  uint64_t invalid;               /* rows with status 90027 */
} svmscore_table;

/* Scores the rows of a table of `column_count` columns, all of `row_count` values, found by their
 * names; those of other names are passed over. The bits of the result are the same for any number
 * of threads, and however rows are put together.
 * [one thread] Owns: the scorer what `table` points at. Lives: that, until the scorer's next call
 * or its end; columns, for the call. Fails: SVMSCORE_TABLE, naming the column: one that the model
 * needs is not there, given twice, of a type that does not fit its field, or its offsets, codes or
 * sizes are wrong. A bad value is the status of its row, also where memory runs out while the row
 * is scored. */
SVMSCORE_API int svmscore_score(svmscore_scorer* scorer, const svmscore_column* columns,
                                size_t column_count, size_t row_count, svmscore_table* table,
                                svmscore_error** error);

/* --- One case ------------------------------------------------------------------------------- */

enum svmscore_value_kind {
  SVMSCORE_MISSING = 0,
  SVMSCORE_NUMBER = 1, /* number */
  SVMSCORE_WHOLE = 2,  /* whole */
  SVMSCORE_TEXT = 3    /* text, length */
};

/* One value. This struct never grows. */
typedef struct svmscore_value {
  int32_t kind;     /* enum svmscore_value_kind */
  int32_t category; /* of a result that is a category of the target: its position; else -1 */
  double number;
  int64_t whole;
  const char* text; /* need not end with a NUL, and in a result need not either */
  size_t length;    /* bytes; of an input it may be SVMSCORE_NUL_ENDED */
} svmscore_value;

/* Scores one case: its values in the order of the model's inputs, the result in the order of the
 * scorer's outputs, the status among them. Values beyond `input_count` are missing; results beyond
 * `output_count` are not written. After the first case nothing is allocated, except for texts
 * longer than any before, for the reason of a failed case, and by derived fields that take texts
 * apart.
 * [one thread] Lives: inputs, for the call; texts of the result, until the scorer's next call or
 * its end. Fails: SVMSCORE_ARGUMENT: more values than the model has inputs. A bad value is the
 * status. */
SVMSCORE_API int svmscore_score_case(svmscore_scorer* scorer, const svmscore_value* inputs,
                                     size_t input_count, svmscore_value* outputs,
                                     size_t output_count, svmscore_error** error);
/* The same for numbers alone. A result that is a category of the target is its position; what is
 * missing, and any other text, is NaN. A NaN of the case is an invalid value: no number means
 * "missing".
 * [one thread] Lives: arguments, for the call. Fails: as above. */
SVMSCORE_API int svmscore_score_numbers(svmscore_scorer* scorer, const double* inputs,
                                        size_t input_count, double* outputs, size_t output_count,
                                        svmscore_error** error);

/* --- Checking ------------------------------------------------------------------------------- */

/* What cases should score. */
typedef struct svmscore_expectation {
  size_t size;
  const svmscore_column* cases; /* by the names of the inputs */
  size_t case_column_count;
  const svmscore_column* expected; /* by the names of outputs; or one column, whatever its name */
  size_t expected_column_count;
  size_t row_count;
  double tolerance; /* how far a number may be from the expected one, as a share of it; 0: 1e-6 */
  const svmscore_text* missing_texts; /* as of a scorer */
  size_t missing_text_count;
  const svmscore_column* actual; /* what the cases really are, one column whatever its name, for
                                    svmscore_doctor_*, which compares probabilities and intervals
                                    with it; `expected` may then be null; null: not known */
} svmscore_expectation;

/* Compares scores with those that `expectation` holds; without one, null, with the document's own
 * verification records. The JSON object holds "agrees", "compared" and "disagreements" (numbers of
 * cells), "agreement" (how well predictions agree with expected ones: accuracy and confusions, or
 * r2 and rmse), "remarks", and "differences": for each its "record" (from 1), "column",
 * "expected", "got" (null where there is nothing), "status" and "reason". `length` may be null.
 * [any thread], one after the other for each model. Owns: the caller the text: svmscore_text_free.
 * Lives: arguments, for the call. Fails: SVMSCORE_DOCUMENT: no records, or records that cannot be
 * read; SVMSCORE_TABLE: columns that do not fit. Scores that disagree are no failure. */
SVMSCORE_API int svmscore_verify(const svmscore_model* model,
                                 const svmscore_expectation* expectation, char** json,
                                 size_t* length, svmscore_error** error);
/* What `svmscore doctor --json` tells of the document of a file, or of memory, also where it
 * cannot be loaded. `options` gives limits, plug-in and name, and may be null; so may
 * `expectation` and `length`.
 * [any thread] Owns: the caller the text: svmscore_text_free. Lives: arguments, for the call.
 * Fails: SVMSCORE_TABLE: columns that do not fit; SVMSCORE_SYSTEM: no plug-in, SVMSCORE_ISA. A
 * document that is refused is a finding, not a failure. */
SVMSCORE_API int svmscore_doctor_file(const char* path, size_t path_length,
                                      const svmscore_load_options* options,
                                      const svmscore_expectation* expectation, char** json,
                                      size_t* length, svmscore_error** error);
SVMSCORE_API int svmscore_doctor_memory(const void* data, size_t data_size,
                                        const svmscore_load_options* options,
                                        const svmscore_expectation* expectation, char** json,
                                        size_t* length, svmscore_error** error);

/* --- Explaining ----------------------------------------------------------------------------- */

/* The working memory for explaining with one model and one background. */
typedef struct svmscore_explainer svmscore_explainer;

typedef struct svmscore_explainer_options {
  size_t size;
  const svmscore_column* background; /* cases, by the names of the inputs: an input that is absent
                                        takes their values; null: the model's support vectors */
  size_t background_column_count;
  size_t background_row_count;
  uint64_t rows;   /* so many of the background are drawn and used; 0: all */
  uint64_t seed;   /* where the draws begin, of the background and of sampled values; 0: 1 */
  uint64_t orders; /* where values are sampled: orders of the inputs that are drawn for each row of
                      the background; 0: chosen by the model */
  int32_t threads; /* 0 and 1 mean one, SVMSCORE_ALL_CORES what the process may use */
  const svmscore_text* missing_texts; /* as of a scorer */
  size_t missing_text_count;
} svmscore_explainer_options;

/* What explanations consist of. A player is an input, or several that meet in a derived field and
 * cannot be told apart: its name is theirs with plus signs between them. */
typedef struct svmscore_explainer_facts {
  size_t size;
  size_t player_count;
  const svmscore_text* players;
  size_t field_count; /* vector fields, of gradients */
  const svmscore_text* fields;
  size_t machine_count; /* decision values of a case: svmscore_model_get_machine has their pairs */
  const double* bases;  /* [machine_count]: the mean decision values of the background */
  int32_t sampled;      /* 0: values are exact; 1: means of draws, with standard errors */
  uint64_t background_rows;          /* that are used */
  uint64_t background_rows_seen;     /* that they were drawn from */
  uint64_t background_rows_left_out; /* that could not be scored */
} svmscore_explainer_facts;

/* Makes an explainer. `options` may be null.
 * [any thread], one after the other for each model. Owns: the caller the explainer:
 * svmscore_explainer_free; it shares the model. Lives: arguments, for the call. Fails:
 * SVMSCORE_DOCUMENT: the plug-in's model explains nothing; SVMSCORE_ARGUMENT, also for a model
 * whose vectors are no cases, without a background; SVMSCORE_TABLE: columns of the background do
 * not fit, or none of its rows can be scored. */
SVMSCORE_API int svmscore_explainer_new(const svmscore_model* model,
                                        const svmscore_explainer_options* options,
                                        svmscore_explainer** explainer, svmscore_error** error);
/* Null is allowed.
 * [one thread] Owns: the library, from here on. Fails: never. */
SVMSCORE_API void svmscore_explainer_free(svmscore_explainer* explainer);
/* Fills `facts`.
 * [any thread] Lives: what is returned, as long as the explainer. Fails: SVMSCORE_ARGUMENT. */
SVMSCORE_API int svmscore_explainer_get_facts(const svmscore_explainer* explainer,
                                              svmscore_explainer_facts* facts,
                                              svmscore_error** error);

/* Where explanations are written: memory of the caller's, row after row; null: not wanted. */
typedef struct svmscore_explanations {
  size_t size;
  double* decisions; /* [rows][machine_count] */
  double* values;    /* [rows][machine_count][player_count]: Shapley values; they add up to the
                        decision value less its base, with a share of entries that depend on no
                        input */
  double* errors;    /* the same shape: standard errors; 0 for exact values */
  double* gradients; /* [rows][machine_count][field_count]: derivatives by the vector fields */
  int64_t* status;   /* [rows]: as of svmscore_table */
  double imbalance;  /* is set: how far values are from adding up, at most, as a share of the sum of
                        a machine's coefficients: rounding, below 1e-10 */
} svmscore_explanations;

/* Where the document says maxWins="true", decision values above the threshold speak for the first
 * category of their pair; otherwise those below it do. Explains the rows of a table, which is as of
 * svmscore_score. Rows that cannot be scored, and those where the model is not defined, or not
 * finite, between the row and the background, have a status that is not 0, and NaN. The bits of the
 * result are the same for any number of threads, and however rows are put together. [one thread]
 * for each explainer. Lives: arguments, for the call. Fails: SVMSCORE_TABLE, as svmscore_score;
 * SVMSCORE_ARGUMENT. */
SVMSCORE_API int svmscore_explain(svmscore_explainer* explainer, const svmscore_column* columns,
                                  size_t column_count, size_t row_count,
                                  svmscore_explanations* explanations, svmscore_error** error);

/* --- Converting ----------------------------------------------------------------------------- */

/* How a model of LIBSVM becomes a document. */
typedef struct svmscore_convert_options {
  size_t size;
  const char* ranges; /* the text of the file that svm-scale -s wrote, where the model was trained
                         on scaled data; null: none */
  size_t ranges_length;
  const svmscore_text* names; /* of the features 1, 2, ...; null: x1, x2, ... */
  size_t name_count;
  const svmscore_text* labels; /* of the classes, in the order of the model's line `label`, of a
                                  one-class model for 1 and -1; null: the model's own */
  size_t label_count;
} svmscore_convert_options;

/* Makes a PMML document of the text of a model that svm-train of LIBSVM wrote, as `svmscore
 * convert` does: svmscore_load_memory reads it, and it scores as svm-predict does. `options` may be
 * null, and so may `length`.
 * [any thread] Owns: the caller the text: svmscore_text_free. Lives: arguments, for the call.
 * Fails: SVMSCORE_DOCUMENT: the model or the ranges cannot be read or converted, and the place is a
 * line of them; SVMSCORE_ARGUMENT: names or labels do not fit the model. */
SVMSCORE_API int svmscore_convert_libsvm(const void* model, size_t model_size,
                                         const svmscore_convert_options* options, char** document,
                                         size_t* length, svmscore_error** error);

/* --- Calibrating ---------------------------------------------------------------------------- */

/* Cases that a model was not trained on and whose outcome is known. */
typedef struct svmscore_holdout {
  size_t size;
  const svmscore_column* cases; /* by the names of the inputs */
  size_t case_column_count;
  const svmscore_column* actual; /* what they really are: categories of the target, or numbers; one
                                    column, whatever its name */
  size_t row_count;
  const svmscore_text* missing_texts; /* as of a scorer */
  size_t missing_text_count;
  double confidence; /* of a regression: the share of cases that intervals should cover; 0: 0.95 */
} svmscore_holdout;

/* Makes a document with calibrated probabilities, or intervals, of that of a file, or of memory, as
 * `svmscore calibrate` does: svmscore_load_memory reads it. The document is read in the default
 * mode and goes by its own policy for missing values; `options` gives limits, plug-in and name, and
 * may be null. `report`, which may be null, gets the JSON object of `svmscore calibrate --json`:
 * the rows, the sigmoids or the width, the figures before and after, and remarks. The date in the
 * document is now, or that of the environment variable SOURCE_DATE_EPOCH. Lengths may be null.
 * [any thread] Owns: the caller both texts: svmscore_text_free. Lives: arguments, for the call.
 * Fails: SVMSCORE_DOCUMENT: the document cannot be read or calibrated; SVMSCORE_TABLE: columns that
 * do not fit, too few cases, a category without cases; SVMSCORE_SYSTEM: no plug-in, SVMSCORE_ISA,
 * SOURCE_DATE_EPOCH. */
SVMSCORE_API int svmscore_calibrate_file(const char* path, size_t path_length,
                                         const svmscore_load_options* options,
                                         const svmscore_holdout* holdout, char** document,
                                         size_t* document_length, char** report,
                                         size_t* report_length, svmscore_error** error);
SVMSCORE_API int svmscore_calibrate_memory(const void* data, size_t data_size,
                                           const svmscore_load_options* options,
                                           const svmscore_holdout* holdout, char** document,
                                           size_t* document_length, char** report,
                                           size_t* report_length, svmscore_error** error);

/* --- The Arrow C Data Interface ------------------------------------------------------------- */

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  int64_t flags;
  int64_t n_children;
  struct ArrowSchema** children;
  struct ArrowSchema* dictionary;
  void (*release)(struct ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  int64_t length;
  int64_t null_count;
  int64_t offset;
  int64_t n_buffers;
  int64_t n_children;
  const void** buffers;
  struct ArrowArray** children;
  struct ArrowArray* dictionary;
  void (*release)(struct ArrowArray*);
  void* private_data;
};

#endif

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE

struct ArrowArrayStream {
  int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
  int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
  const char* (*get_last_error)(struct ArrowArrayStream*);
  void (*release)(struct ArrowArrayStream*);
  void* private_data;
};

#endif

/* Scores a record batch: `schema` and `batch` are a struct whose children are the columns. Taken
 * are: null, bool, signed and unsigned integers, half, single and double floats, texts (utf8,
 * large_utf8, utf8_view), dates, times of day, timestamps without a time zone or in UTC (read as
 * their ISO 8601 text, for fields of dates, times and texts), and dictionaries of these. A column
 * of another type, nested ones too, is refused where the model reads it. The result is a struct of
 * the scorer's outputs: double, int64, large_utf8, or with category_codes a dictionary of int32
 * and large_utf8.
 * [one thread] Owns: the caller both arguments as before, and the results, which outlive scorer
 * and model: their release. Lives: arguments, for the call. Fails: as svmscore_score;
 * SVMSCORE_ARGUMENT for what has been released or is no struct. */
SVMSCORE_API int svmscore_score_arrow(svmscore_scorer* scorer, const struct ArrowSchema* schema,
                                      const struct ArrowArray* batch,
                                      struct ArrowSchema* scored_schema, struct ArrowArray* scored,
                                      svmscore_error** error);
/* Makes of a stream of record batches the stream of their scores, batch by batch, as they are
 * asked for. The new stream works with the scorer's model and options, and needs the scorer no
 * longer.
 * [one thread], and the new stream [one thread]. Owns: on success the new stream `cases`, which is
 * marked as released, and the caller the new stream: its release. Fails: as svmscore_score where
 * the schema does not fit, SVMSCORE_TABLE where the stream fails; the new stream by an errno and
 * its get_last_error. */
SVMSCORE_API int svmscore_score_stream(const svmscore_scorer* scorer,
                                       struct ArrowArrayStream* cases,
                                       struct ArrowArrayStream* scored, svmscore_error** error);

#ifdef __cplusplus
}
#endif

#endif /* CAPI_SVMSCORE_H_ */
