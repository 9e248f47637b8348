"""The rules of the project, one module per subject. Each has check(tree), which yields a line for each breach."""
