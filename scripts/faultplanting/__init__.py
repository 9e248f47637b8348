"""Faults for scripts/plant-faults: which there are, and how the tests are tried on one."""
