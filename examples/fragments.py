import kestro
db = kestro.from_smiles("examples/molecules.smi", on_error="skip")
result = kestro.mine(db, min_support="20%", maximal=True)
print(result)
print(result.to_pandas()[["id", "support", "smarts"]].to_string(index=False))
