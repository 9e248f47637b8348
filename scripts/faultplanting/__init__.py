"""Faults for scripts/plant-faults: their kinds, and the trial of one fault."""
