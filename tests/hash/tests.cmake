# The digest suite runs twice: the everyday cases, and the several-hundred-megabyte file on its
# own, labelled slow.
util_add_gtest(hash hash_test ENV GTEST_FILTER=-*Slow*)
util_add_gtest(hash_slow hash_test ENV GTEST_FILTER=*Slow*)
set_tests_properties(hash_slow PROPERTIES LABELS slow)
