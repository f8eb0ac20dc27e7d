"""The parts of scripts/mutate, one topic each."""
