"""What ./bench runs: the cases, the measuring, the table."""
