"""Makes, changes and checks the store folders of mapistore64.dll (docs/mapistore.md)."""
