/* iris MODEL: the steps of docs/c-interface.md, with the model of examples/iris. */
#include <svmscore.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Ends the program where a call failed. */
static void check(int kind, svmscore_error* error) {
  if (kind == SVMSCORE_OK) return;
  fprintf(stderr, "%s\n", svmscore_error_message(error).data);
  svmscore_error_free(error);
  exit(1);
}

static void tell_remark(void* context, const char* text, size_t length) {
  (void)context;
  fprintf(stderr, "remark: %.*s\n", (int)length, text);
}

static svmscore_model* load(const char* path) {
  svmscore_load_options options = SVMSCORE_INIT(svmscore_load_options);
  svmscore_model* model = NULL;
  svmscore_error* error = NULL;
  options.remark = tell_remark;
  check(svmscore_load_file(path, SVMSCORE_NUL_ENDED, &options, &model, &error), error);
  return model;
}

static void print_inputs(const svmscore_model* model) {
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_input input = SVMSCORE_INIT(svmscore_input);
  svmscore_error* error = NULL;
  size_t i;
  check(svmscore_model_get_facts(model, &facts, &error), error);
  for (i = 0; i < facts.input_count; ++i) {
    check(svmscore_model_get_input(model, i, &input, &error), error);
    printf("%s: %s%s\n", input.name.data, input.type.data,
           input.role == SVMSCORE_NEEDED ? ", needed" : "");
  }
}

/* A column of doubles that lie one after the other. */
static svmscore_column column_of(const char* name, const double* values, size_t rows) {
  svmscore_column column = SVMSCORE_INIT(svmscore_column);
  column.name = name;
  column.name_length = SVMSCORE_NUL_ENDED;
  column.type = SVMSCORE_F64;
  column.length = rows;
  column.data = values;
  column.data_size = rows * sizeof *values;
  return column;
}

static void score_table(const svmscore_model* model) {
  static const double lengths[] = {5.1, 6.3, 5.8};
  static const double widths[] = {3.5, 3.3, 2.7};
  static const double petals[] = {1.4, 6.0, 5.1};
  static const double petal_widths[] = {0.2, 2.5, 0.0};
  static const uint8_t known[] = {0x03}; /* a bit for each row: the third petal has no width */
  svmscore_column columns[4];
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_scorer* scorer = NULL;
  svmscore_error* error = NULL;
  size_t row;
  columns[0] = column_of("petal_length", petals, 3); /* in any order */
  columns[1] = column_of("petal_width", petal_widths, 3);
  columns[1].validity = known;
  columns[1].validity_size = sizeof known;
  columns[2] = column_of("sepal_length", lengths, 3);
  columns[3] = column_of("sepal_width", widths, 3);
  check(svmscore_scorer_new(model, NULL, &scorer, &error), error);
  check(svmscore_score(scorer, columns, 4, 3, &table, &error), error);
  for (row = 0; row < table.row_count; ++row) {
    const svmscore_column* prediction = &table.columns[0];
    const int64_t* offsets = prediction->offsets;
    if (table.status[row] == 0) {
      printf("row %u: %.*s\n", (unsigned)row, (int)(offsets[row + 1] - offsets[row]),
             (const char*)prediction->data + offsets[row]);
    } else {
      printf("row %u: status %ld\n", (unsigned)row, (long)table.status[row]);
    }
  }
  svmscore_scorer_free(scorer); /* and what `table` points at */
}

static void score_case(const svmscore_model* model) {
  svmscore_value inputs[4], outputs[2];
  svmscore_scorer* scorer = NULL;
  svmscore_error* error = NULL;
  memset(inputs, 0, sizeof inputs); /* all missing */
  inputs[0].kind = SVMSCORE_NUMBER;
  inputs[0].number = 5.1;
  inputs[1].kind = SVMSCORE_TEXT;
  inputs[1].text = "3.5";
  inputs[1].length = 3;
  inputs[2].kind = SVMSCORE_NUMBER;
  inputs[2].number = 1.4;
  inputs[3].kind = SVMSCORE_NUMBER;
  inputs[3].number = 0.2;
  check(svmscore_scorer_new(model, NULL, &scorer, &error), error);
  check(svmscore_score_case(scorer, inputs, 4, outputs, 2, &error), error);
  if (outputs[0].kind == SVMSCORE_TEXT) {
    printf("%.*s, confidence %g\n", (int)outputs[0].length, outputs[0].text, outputs[1].number);
  }
  svmscore_scorer_free(scorer);
}

/* What each input contributes to a decision value, with the support vectors as the background. */
static void explain_table(const svmscore_model* model) {
  static const double lengths[] = {5.1, 6.3};
  static const double widths[] = {3.5, 3.3};
  static const double petals[] = {1.4, 6.0};
  static const double petal_widths[] = {0.2, 2.5};
  const size_t rows = 2;
  svmscore_column columns[4];
  svmscore_explainer_facts facts = SVMSCORE_INIT(svmscore_explainer_facts);
  svmscore_explanations explanations = SVMSCORE_INIT(svmscore_explanations);
  svmscore_explainer* explainer = NULL;
  svmscore_error* error = NULL;
  size_t player;
  columns[0] = column_of("petal_length", petals, rows);
  columns[1] = column_of("petal_width", petal_widths, rows);
  columns[2] = column_of("sepal_length", lengths, rows);
  columns[3] = column_of("sepal_width", widths, rows);
  check(svmscore_explainer_new(model, NULL, &explainer, &error), error);
  check(svmscore_explainer_get_facts(explainer, &facts, &error), error);
  explanations.values = calloc(rows * facts.machine_count * facts.player_count, sizeof(double));
  if (explanations.values == NULL) exit(1);
  check(svmscore_explain(explainer, columns, 4, rows, &explanations, &error), error);
  for (player = 0; player < facts.player_count; ++player) {
    printf("row 0, first decision value: %+.3f by %s\n", explanations.values[player],
           facts.players[player].data);
  }
  free(explanations.values);
  svmscore_explainer_free(explainer);
}

/* Column names that do not fit are the call's failure. */
static void fail(const svmscore_model* model) {
  static const double values[] = {1.0};
  const svmscore_column column = column_of("petal_lenght", values, 1);
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_scorer* scorer = NULL;
  svmscore_error* error = NULL;
  check(svmscore_scorer_new(model, NULL, &scorer, &error), error);
  if (svmscore_score(scorer, &column, 1, 1, &table, &error) == SVMSCORE_TABLE) {
    printf("%s\n", svmscore_error_sentence(error).data);
  }
  svmscore_error_free(error);
  svmscore_scorer_free(scorer);
}

static void examine(const char* path) {
  char* json = NULL;
  size_t length = 0;
  svmscore_error* error = NULL;
  check(svmscore_doctor_file(path, SVMSCORE_NUL_ENDED, NULL, NULL, &json, &length, &error), error);
  printf("doctor: %u bytes of JSON\n", (unsigned)length);
  svmscore_text_free(json);
}

int main(int argc, char** argv) {
  svmscore_model* model;
  if (argc != 2) return 2;
  model = load(argv[1]);
  print_inputs(model);
  score_table(model);
  score_case(model);
  explain_table(model);
  fail(model);
  svmscore_model_free(model);
  examine(argv[1]);
  return 0;
}
